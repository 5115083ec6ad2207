#include "app/SubMain.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <QOpenGLContext>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImage>
#include <QKeySequence>
#include <QPointer>
#include <QProcess>
#include <QSettings>
#include <QSocketNotifier>
#include <QThread>
#include <chrono>
#include <csignal>
#include <future>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

#include "app/ApplicationFolder.h"
#include "app/Options.h"
#include "core/Clock.h"
#include "core/CommandLine.h"
#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "core/RandomSource.h"
#include "core/TextPass.h"
#include "core/TextEngine.h"
#include "forms/OutputClones.h"
#include "forms/MainForm.h"
#include "forms/ReadFrameArguments.h"
#include "forms/Shape3DForm.h"
#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/OutputConfigurationForm.h"
#include "persistence/ShowFile.h"
#include "persistence/UIPositionFile.h"
#include "render/FrameImage.h"
#include "render/MeshImport.h"
#include "render/RenderDevice.h"
#include "forms/OutputForms.h"
#include "render/FrameRenderer.h"
#include "lumivane/Version.h"
#include "shell/FileMenu.h"
#include "shell/FocusTracker.h"
#include "shell/CloneDisplay.h"
#include "shell/MainWindow.h"
#include "shell/Shape3DWindow.h"
#include "shell/BackgroundsWindow.h"
#include "shell/EffectsWindow.h"
#include "shell/OutputConfigurationWindow.h"
#include "shell/OutputDisplay.h"
#include "shell/MessageWindow.h"
#include "shell/SplashWindow.h"

namespace lumivane {

namespace {

int signalPipe[2] = {-1, -1};

void OnSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}

// A terminate or interrupt signal (a session ending, a script's kill) quits as the quit command
// does, so nothing is lost; the handler only wakes the event loop.
void QuitOnSignals(const std::function<void()>& quit) {
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0) return;
  auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, qApp);
  QObject::connect(notifier, &QSocketNotifier::activated, qApp, [quit] {
    char byte;
    [[maybe_unused]] const auto got = ::read(signalPipe[0], &byte, 1);
    quit();
  });
  struct sigaction sa {};
  sa.sa_handler = OnSignal;
  sigemptyset(&sa.sa_mask);
  sa.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &sa, nullptr);
  sigaction(SIGINT, &sa, nullptr);
}

// The fields of the command line act on the forms that own them; those not built yet are only
// announced.
class StartupCommandTarget final : public CommandLineTarget {
 public:
  StartupCommandTarget(MainForm& form, SplashWindow& splash) : form_(form), splash_(splash) {}
  void ShowStatus(std::string_view status) override { splash_.SetStatus(QString::fromUtf8(status.data(), status.size())); }
  void LoadPlayList(const std::string&) override {}
  void LoadPreset(int) override {}
  void SelectMonitor(int listIndex) override { form_.Model().SetListIndex(form_.Playback().cboMonitors, listIndex); }
  void StartRender() override { form_.StartRender(); }
  void SetFullScreen(int value) override {
    if ((ControlModel::Value(form_.Playback().cmdFullScreen) != 0) != (value != 0))
      form_.Model().Press(form_.Playback().cmdFullScreen);
  }
  void SetResolution(const std::string& size) override {
    form_.Model().SetText(form_.Playback().cboResolution, size);
    form_.Model().SetValue(form_.Playback().cmdLockResolution, 1);
  }
  void SetAlwaysOnTop(int value) override {
    form_.Model().SetValue(form_.Playback().chkAlwaysOnTop, value != 0 ? 1 : 0);
  }

 private:
  MainForm& form_;
  SplashWindow& splash_;
};

}  // namespace

int SubMain(int& argc, char** argv, const AppOptions& options) {
  QApplication app(argc, argv);
  QCoreApplication::setOrganizationName(QStringLiteral("Lumivane Orrilabs"));
  QCoreApplication::setApplicationName(QStringLiteral("Lumivane"));
  QCoreApplication::setApplicationVersion(
      QStringLiteral("%1.%2.%3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision));

  std::string folderError;
  const std::string applicationFolder = PrepareApplicationFolder(options.appFolder, folderError);
  if (applicationFolder.empty()) {
    std::fprintf(stderr, "lumivane: %s\n", folderError.c_str());
    return 2;
  }

  SystemClock clock;
  SeededRandom random;
  random.ReseedFromClock(clock);
  EngineContext context{clock, random};
  ControlModel model;
  TextEngine text(context);
  MessageWindow msgBox;
  MainForm form(model, text, msgBox);
  FocusTracker focus(model);
  form.ScreenshotFolder = applicationFolder + "/Screenshots";
  // The texts step in every frame; their markers in the pane show what they say. The output
  // window holds the render object while playback runs.
  QPointer<OutputDisplay> display;
  TextPass idleTexts;
  form.RenderFrame = [&] {
    const FrameArguments args = ReadFrameArguments(form);
    if (FrameRenderer* renderer = display && form.OutputDevice() != nullptr ? display->Renderer() : nullptr)
      renderer->RenderFrame(args);
    else
      idleTexts.RunAll(text, args.Text, {});
  };
  // A random face for texts that change face at each update, from the fonts installed.
  const QStringList families = QFontDatabase::families();
  text.RandomFontName = [&families, &random]() -> std::string {
    if (families.isEmpty()) return {};
    const auto pick = static_cast<qsizetype>(random.Rnd() * static_cast<double>(families.size()));
    return families[std::min(pick, families.size() - 1)].toStdString();
  };
  text.PreviewCaption = [&form](std::int32_t index, std::string_view shown, std::int32_t) {
    form.Model().SetCaption(form.TextLabel(index), shown);
  };
  form.FileExists = [](const std::string& path) { return QFileInfo::exists(QString::fromStdString(path)); };
  // --log FILE: skipped failures, one line each with the time, for later diagnosis.
  std::unique_ptr<QFile> log;
  if (!options.logFile.empty()) {
    log = std::make_unique<QFile>(QString::fromStdString(options.logFile));
    if (!log->open(QIODevice::Append | QIODevice::Text)) {
      std::fprintf(stderr, "lumivane: cannot write the log file %s\n", options.logFile.c_str());
      return 2;
    }
    model.SetFailureSink([&log](const std::string& line) {
      log->write(QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toUtf8() + ' ' +
                 QByteArray::fromStdString(line) + '\n');
      log->flush();
    });
  }

  ShowFile show(form);
  const std::string lastPreset = applicationFolder + "/LastPreset.xml";
  form.LoadFactoryShow = [&show, &applicationFolder] {
    std::string ignored;  // no factory show: the empty one stands
    show.EngineFileLoad(applicationFolder + "/Reset.xml", ignored);
  };

  bool quitting = false;
  form.Yield = [&form] {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    // Waiting (the countdown, a pause) need not burn a core.
    if (form.CountingDown() || form.Paused()) QThread::msleep(1);
  };
  // Clone outputs: further windows drawn by the output's context with the finished frame.
  OutputConfigurationForm outputConfiguration(model);
  OutputClones clones(outputConfiguration);
  clones.ApplicationFolder = applicationFolder;
  ConnectClonePositions(clones, [&log](const std::string& failure) {
    if (log) log->write(QByteArray::fromStdString(failure) + '\n');
  });
  clones.Yield = [&form] { if (form.Yield) form.Yield(); };
  clones.CreateCloneWindow = [&display]() -> std::unique_ptr<CloneWindow> {
    return std::make_unique<CloneOutput>([&display](CloneDisplay& window, const BlitSource& source, int identify) {
      QOpenGLContext* context = display ? display->Context() : nullptr;
      RenderDevice* device = display ? display->Device() : nullptr;
      if (context == nullptr || device == nullptr) return;
      window.Draw(*context, [device, &source](int width, int height, std::uint32_t framebuffer) {
        device->Present(width, height, framebuffer, source);
      }, identify);
    });
  };
  clones.MainOutputGeometry = [&display] {
    if (!display) return WindowRect{};
    const QRect g = display->frameGeometry();
    return WindowRect{g.x(), g.y(), g.width(), g.height()};
  };
  outputConfiguration.StopRendering = [&form] {
    if (form.Running()) form.StopRender();
  };
  form.Clones = &clones;
  // The text boxes of the running output follow the texts' list.
  form.AfterTextRemoved = [&display](std::int32_t index) {
    if (FrameRenderer* renderer = display ? display->Renderer() : nullptr) renderer->TextBoxRemove(index);
  };
  form.AfterZOrder = [&display](std::int32_t index, bool toBack) {
    if (FrameRenderer* renderer = display ? display->Renderer() : nullptr) renderer->TextFrameZOrder(index, toBack);
  };
  // The background and effect layers: their forms reach the output while one runs.
  BackgroundsForm backgroundForm(model, msgBox, form.BackgroundColor);
  EffectsForm effectForm(model);
  ConnectOutputForms(form, backgroundForm, effectForm, [&display]() -> FrameRenderer* { return display ? display->Renderer() : nullptr; });
  Shape3DForm shapeForm(model, form);
  // A model the operator picked is read on a thread of its own while frames go on; the form shows
  // what was read (or why not). The output reads the file again for itself, off its frame path.
  shapeForm.LoadMesh = [&form](const std::string& file) {
    auto reading = std::async(std::launch::async, [file] { return ImportMesh(file); });
    QApplication::setOverrideCursor(Qt::WaitCursor);
    while (reading.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    QApplication::restoreOverrideCursor();
    form.TextSelected.Mesh3DInfo = reading.get().Info;
  };

  form.CreateOutputWindow = [&form, &text, &display, &applicationFolder, &clones]() -> std::unique_ptr<OutputWindow> {
    auto* window = new OutputDisplay(text, applicationFolder);
    window->IdentifyNumber = [&clones] { return clones.MainIdentifyNumber(); };
    display = window;
    // What a key does may close this very window: hand it on after the key's event is done.
    QObject::connect(window, &OutputDisplay::KeyCommand, qApp, [&form](OutputKey key) {
      QMetaObject::invokeMethod(qApp, [&form, key] { form.HotKey(key); }, Qt::QueuedConnection);
    });
    QObject::connect(window, &OutputDisplay::CloseRequested, qApp, [&form] {
      QMetaObject::invokeMethod(qApp, [&form] { form.HotKey(OutputKey::Stop); }, Qt::QueuedConnection);
    });
    QObject::connect(&window->TimerRender(), &QTimer::timeout, qApp, [&form] { form.TimerRender(); });
    return std::make_unique<DisplayOutput>(window);
  };
  form.ApplicationQuit = [&](bool restart, bool /*savePositions*/) {
    if (quitting) return;
    quitting = true;
    QCoreApplication::processEvents();
    if (form.Running()) form.StopRender();
    std::string error;
    if (!show.EngineFileSave(lastPreset, error)) std::fprintf(stderr, "lumivane: %s\n", error.c_str());
    if (restart) QProcess::startDetached(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    // exit(), not quit(): quit() would send the windows a close request, which asks first.
    QCoreApplication::exit(0);
  };
  QuitOnSignals([&form] { form.ApplicationQuit(false, true); });

  // 1. The colour scheme comes from the settings once schemes exist.
  QCoreApplication::processEvents();
  // 2.
  SplashWindow splash;
  splash.Initialize();
  splash.show();
  splash.SetStatus(QStringLiteral("Starting Lumivane"));
  MainWindow window(form);
  form.RenderPreview = [&form, &window] {
    if (RenderDevice* device = form.OutputDevice()) window.ShowPreview(ReadFrameImage(*device));
  };
  FileMenu fileMenu(window, form, show, msgBox, QString::fromStdString(applicationFolder));
  OutputConfigurationWindow outputWindow(outputConfiguration);
  QMenu* outputMenu = window.menuBar()->addMenu(QObject::tr("&Output"));
  QObject::connect(outputMenu->addAction(QObject::tr("Output &Configuration...")), &QAction::triggered, [&outputWindow] {
    outputWindow.show();
    outputWindow.raise();
  });
  // The layers: the background pictures with the look and output stage, and the effect.
  BackgroundsWindow backgroundsWindow(backgroundForm);
  backgroundsWindow.PictureFolder = QString::fromStdString(applicationFolder + "/Backgrounds");
  EffectsWindow effectsWindow(effectForm);
  effectsWindow.PictureFolder = QString::fromStdString(applicationFolder + "/Effects");
  effectsWindow.GrabEffect = [&display]() -> QImage {
    FrameRenderer* renderer = display ? display->Renderer() : nullptr;
    RenderDevice* device = display ? display->Device() : nullptr;
    TextureDesc desc;
    // Outside a frame the output's context must be made current first.
    if (renderer == nullptr || device == nullptr || !display->BeginFrame() ||
        !device->GetDesc(renderer->GetEffectTexture(), desc))
      return {};
    QImage picture;
    device->ReadTexture(renderer->GetEffectTexture(), [&](const std::uint8_t* top, std::ptrdiff_t stride) {
      picture = FrameToImage(top, stride, desc.Width, desc.Height);
    });
    return picture;
  };
  QMenu* layersMenu = window.menuBar()->addMenu(QObject::tr("&Layers"));
  QAction* backgroundsAction = layersMenu->addAction(QObject::tr("&Backgrounds..."));
  backgroundsAction->setShortcut(QKeySequence(QStringLiteral("Ctrl+B")));
  QObject::connect(backgroundsAction, &QAction::triggered, [&backgroundsWindow] {
    backgroundsWindow.show();
    backgroundsWindow.raise();
  });
  QAction* effectsAction = layersMenu->addAction(QObject::tr("&Effects..."));
  effectsAction->setShortcut(QKeySequence(QStringLiteral("Ctrl+E")));
  QObject::connect(effectsAction, &QAction::triggered, [&effectsWindow] {
    effectsWindow.show();
    effectsWindow.raise();
  });
  Shape3DWindow shapeWindow(shapeForm);
  shapeWindow.MeshFolder = QString::fromStdString(applicationFolder);
  shapeWindow.PictureFolder = QString::fromStdString(applicationFolder);
  QMenu* textMenu = window.menuBar()->addMenu(QObject::tr("&Text"));
  QObject::connect(textMenu->addAction(QObject::tr("3D &Shape...")), &QAction::triggered, [&shapeWindow] {
    shapeWindow.show();
    shapeWindow.raise();
  });
  QObject::connect(outputMenu->addAction(QObject::tr("&Device Information")), &QAction::triggered, [&] {
    FrameRenderer* renderer = display ? display->Renderer() : nullptr;
    msgBox.Show(renderer != nullptr ? renderer->GetDevicePropertyInfo()
                                   : std::string("The device is made when playback starts."),
                MsgBox::OKOnly);
  });
  // 3.
  splash.SetStatus(QStringLiteral("Generating User Interface..."));
  // 4.
  splash.SetStatus(QStringLiteral("Loading FreeFrame Plugins..."));
  // 5.
  splash.SetStatus(QStringLiteral("Initializing..."));
  window.show();
  form.Reset();
  // 6. MIDI connects here once MIDI control exists.
  if (QSettings().value(QStringLiteral("LastMIDIEnabled")).toInt() == 1)
    splash.SetStatus(QStringLiteral("Connecting to MIDI..."));
  // 7.
  splash.SetStatus(QStringLiteral("Loading Last Particle Presets..."));
  // The output count comes before the command line, so a show started from it has its clones too.
  InitializeOutputCount(outputConfiguration, applicationFolder);
  // 8.
  if (!options.commandLine.empty()) {
    splash.SetStatus(QStringLiteral("Starting with CommandLine..."));
    StartupCommandTarget target(form, splash);
    CommandLineProcess(options.commandLine, target);
  } else {
    splash.SetStatus(QStringLiteral("Loading Last Preset,Playlist and Cue..."));
    std::string ignored;  // no last show (a first start): the factory show stands
    show.EngineFileLoad(lastPreset, ignored);
  }
  // 9.
  splash.SetStatus(QStringLiteral("Loading Last Audio Setup..."));
  // 10.
  splash.SetStatus(QStringLiteral("Initializing Projection Mapping"));
  // 11.
  splash.SetStatus(QStringLiteral("Loading User Interface Position"));
  // 12.
  splash.SetStatus(QStringLiteral("Ready..."));
  QElapsedTimer ready;
  ready.start();
  while (ready.elapsed() < 500 && !quitting) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QThread::msleep(5);
  }
  splash.hide();
  QCoreApplication::processEvents();
  if (quitting) return 0;
  return QApplication::exec();
}

}  // namespace lumivane

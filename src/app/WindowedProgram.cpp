#include "app/WindowedProgram.h"

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
#include "app/Stage.h"
#include "core/Clock.h"
#include "core/CommandLine.h"
#include "core/RandomSource.h"
#include "forms/OutputClones.h"
#include "persistence/UIPositionFile.h"
#include "render/FrameImage.h"
#include "render/MeshImport.h"
#include "render/RenderDevice.h"
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
#include "shell/StageTheme.h"

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

// The windowed program's objects: the stage with the forms, the windows over them, the output
// window while playback runs and its clones.
class WindowedProgram final : public OutputHost, public PlaybackHost {
 public:
  WindowedProgram(std::string applicationFolder, const AppOptions& options)
      : options_(options), stage_(clock_, random_, msgBox_, applicationFolder), focus_(stage_.Model),
        clones_(stage_.OutputConfiguration), lastPreset_(applicationFolder + "/LastPreset.xml") {
    stage_.SetOutputHost(this);
    stage_.Main.Host = this;
  }
  // The forms go after the windows: they must not reach this program meanwhile.
  ~WindowedProgram() override {
    stage_.Main.Host = nullptr;
    stage_.SetOutputHost(nullptr);
  }

  // The output window: made when playback starts; it holds the renderer while playback runs.
  std::unique_ptr<OutputWindow> CreateOutputWindow() override {
    MainForm& form = stage_.Main;
    auto* window = new OutputDisplay(stage_.Text, stage_.ApplicationFolder());
    window->IdentifyNumber = [this] { return clones_.MainIdentifyNumber(); };
    display_ = window;
    // What a key does may close this very window: hand it on after the key's event is done.
    QObject::connect(window, &OutputDisplay::KeyCommand, qApp, [&form](OutputKey key) {
      QMetaObject::invokeMethod(qApp, [&form, key] { form.HotKey(key); }, Qt::QueuedConnection);
    });
    QObject::connect(window, &OutputDisplay::CloseRequested, qApp, [&form] {
      QMetaObject::invokeMethod(qApp, [&form] { form.HotKey(OutputKey::Stop); }, Qt::QueuedConnection);
    });
    QObject::connect(&window->TimerRender(), &QTimer::timeout, qApp, [&form] { form.TimerRender(); });
    return std::make_unique<DisplayOutput>(window);
  }

  void Yield() override {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    // Waiting (the countdown, a pause) need not burn a core.
    if (stage_.Main.CountingDown() || stage_.Main.Paused()) QThread::msleep(1);
  }

  // Quitting stops playback and keeps the show in "LastPreset.xml"; a terminate signal quits the
  // same way, so nothing is lost.
  void Quit(bool restart, bool /*savePositions*/) override {
    if (quitting_) return;
    quitting_ = true;
    QCoreApplication::processEvents();
    if (stage_.Main.Running()) stage_.Main.StopRender();
    std::string error;
    if (!stage_.Show.EngineFileSave(lastPreset_, error)) std::fprintf(stderr, "lumivane: %s\n", error.c_str());
    if (restart) QProcess::startDetached(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    // exit(), not quit(): quit() would send the windows a close request, which asks first.
    QCoreApplication::exit(0);
  }

  void RenderPreview() override {
    if (RenderDevice* device = stage_.Main.OutputDevice()) window_->ShowPreview(ReadFrameImage(*device));
  }

  FrameRenderer* RunningRenderer() override { return display_ ? display_->Renderer() : nullptr; }
  FrameRenderer* FrameRendererForFrame() override {
    return display_ && stage_.Main.OutputDevice() != nullptr ? display_->Renderer() : nullptr;
  }

  // Start-up, in its order, then the event loop. Answers the exit code.
  int Run() {
    // Draws from the clock's time, so no two shows shuffle alike.
    random_.ReseedFromClock(clock_);
    if (!OpenFailureLog()) return 2;
    ConnectEngine();
    ConnectClones();
    ConnectModelReading();
    QuitOnSignals([this] { Quit(false, true); });
    // The colour scheme, read once, before the first window shows.
    scheme_ = ReadColourScheme(QSettings());
    ApplyTheme(LightThemeChosen(QSettings()), scheme_);
    QCoreApplication::processEvents();
    ShowSplash();
    BuildWindows();
    splash_.SetStatus(QStringLiteral("Generating User Interface..."));
    splash_.SetStatus(QStringLiteral("Loading FreeFrame Plugins..."));
    splash_.SetStatus(QStringLiteral("Initializing..."));
    window_->show();
    stage_.Main.Reset();
    // MIDI connects here once MIDI control exists.
    if (QSettings().value(QStringLiteral("MIDI/LastMIDIEnabled")).toInt() == 1)
      splash_.SetStatus(QStringLiteral("Connecting to MIDI..."));
    splash_.SetStatus(QStringLiteral("Loading Last Particle Presets..."));
    // The output count comes before the command line, so a show started from it has its clones too.
    InitializeOutputCount(stage_.OutputConfiguration, stage_.ApplicationFolder());
    StartWithCommandLineOrLastShow();
    // Audio, projection mapping and window places load here as those parts come.
    splash_.SetStatus(QStringLiteral("Loading Last Audio Setup..."));
    splash_.SetStatus(QStringLiteral("Initializing Projection Mapping"));
    splash_.SetStatus(QStringLiteral("Loading User Interface Position"));
    splash_.SetStatus(QStringLiteral("Ready..."));
    ShowReadyThenHideSplash();
    if (quitting_) return 0;
    return QApplication::exec();
  }

 private:
  // --log FILE: skipped failures, one line each with the time, for later diagnosis.
  bool OpenFailureLog() {
    if (options_.logFile.empty()) return true;
    log_ = std::make_unique<QFile>(QString::fromStdString(options_.logFile));
    if (!log_->open(QIODevice::Append | QIODevice::Text)) {
      std::fprintf(stderr, "lumivane: cannot write the log file %s\n", options_.logFile.c_str());
      return false;
    }
    stage_.Model.SetFailureSink([this](const std::string& line) { LogFailure(line); });
    return true;
  }

  // One skipped failure into the --log file, with the time; nothing without one.
  void LogFailure(const std::string& line) {
    if (!log_) return;
    log_->write(QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toUtf8() + ' ' +
                QByteArray::fromStdString(line) + '\n');
    log_->flush();
  }

  // What only a windowed program gives the engine: installed fonts, the pane's markers, screenshots
  // and an event loop to yield to.
  void ConnectEngine() {
    MainForm& form = stage_.Main;
    form.ScreenshotFolder = stage_.ApplicationFolder() + "/Screenshots";
    // A random face for texts that change face at each update, from the fonts installed.
    families_ = QFontDatabase::families();
    stage_.Text.RandomFontName = [this]() -> std::string {
      if (families_.isEmpty()) return {};
      const auto pick = static_cast<qsizetype>(random_.Rnd() * static_cast<double>(families_.size()));
      return families_[std::min(pick, families_.size() - 1)].toStdString();
    };
    // The texts step in every frame; their markers in the pane show what they say.
    stage_.Text.PreviewCaption = [&form](std::int32_t index, std::string_view shown, std::int32_t) {
      form.Model().SetCaption(form.TextLabel(index), shown);
    };
  }

  // Clone outputs: further windows drawn by the output's context with the finished frame.
  void ConnectClones() {
    clones_.ApplicationFolder = stage_.ApplicationFolder();
    ConnectClonePositions(clones_, [this](const std::string& failure) { LogFailure(failure); });
    clones_.ReportFailure = [this](const std::string& failure) { LogFailure(failure); };
    clones_.Yield = [this] { Yield(); };
    clones_.CreateCloneWindow = [this]() -> std::unique_ptr<CloneWindow> {
      return std::make_unique<CloneOutput>([this](CloneDisplay& window, const BlitSource& source, int identify) {
        QOpenGLContext* context = display_ ? display_->Context() : nullptr;
        RenderDevice* device = display_ ? display_->Device() : nullptr;
        if (context == nullptr || device == nullptr) return;
        window.Draw(*context, [device, &source](int width, int height, std::uint32_t framebuffer) {
          device->Present(width, height, framebuffer, source);
        }, identify);
      });
    };
    clones_.MainOutputGeometry = [this] {
      if (!display_) return WindowRect{};
      const QRect g = display_->frameGeometry();
      return WindowRect{g.x(), g.y(), g.width(), g.height()};
    };
    stage_.OutputConfiguration.StopRendering = [this] {
      if (stage_.Main.Running()) stage_.Main.StopRender();
    };
    stage_.Main.Clones = &clones_;
  }

  // A model the operator picked is read on a thread of its own while frames go on; the form shows
  // what was read (or why not). The output reads the file again for itself, off its frame path.
  void ConnectModelReading() {
    stage_.Shape.LoadMesh = [this](const std::string& file) {
      auto reading = std::async(std::launch::async, [file] { return ImportMesh(file); });
      QApplication::setOverrideCursor(Qt::WaitCursor);
      while (reading.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
      QApplication::restoreOverrideCursor();
      stage_.Main.TextSelected.Mesh3DInfo = reading.get().Info;
    };
  }

  void ShowSplash() {
    splash_.Initialize();
    splash_.show();
    splash_.SetStatus(QStringLiteral("Starting Lumivane"));
  }

  // The main window with its menus, and the windows of the other forms.
  void BuildWindows() {
    MainForm& form = stage_.Main;
    const std::string& folder = stage_.ApplicationFolder();
    window_ = std::make_unique<MainWindow>(form);
    fileMenu_ = std::make_unique<FileMenu>(*window_, form, stage_.Show, msgBox_, QString::fromStdString(folder));
    outputWindow_ = std::make_unique<OutputConfigurationWindow>(stage_.OutputConfiguration);
    QMenu* outputMenu = window_->menuBar()->addMenu(QObject::tr("&Output"));
    ShowOnAction(outputMenu->addAction(QObject::tr("Output &Configuration...")), outputWindow_.get());
    // The layers: the background pictures with the look and output stage, and the effect.
    backgroundsWindow_ = std::make_unique<BackgroundsWindow>(stage_.Backgrounds);
    backgroundsWindow_->PictureFolder = QString::fromStdString(folder + "/Backgrounds");
    effectsWindow_ = std::make_unique<EffectsWindow>(stage_.Effects);
    effectsWindow_->PictureFolder = QString::fromStdString(folder + "/Effects");
    effectsWindow_->GrabEffect = [this] { return GrabEffect(); };
    QMenu* layersMenu = window_->menuBar()->addMenu(QObject::tr("&Layers"));
    QAction* backgroundsAction = layersMenu->addAction(QObject::tr("&Backgrounds..."));
    backgroundsAction->setShortcut(QKeySequence(QStringLiteral("Ctrl+B")));
    ShowOnAction(backgroundsAction, backgroundsWindow_.get());
    QAction* effectsAction = layersMenu->addAction(QObject::tr("&Effects..."));
    effectsAction->setShortcut(QKeySequence(QStringLiteral("Ctrl+E")));
    ShowOnAction(effectsAction, effectsWindow_.get());
    shapeWindow_ = std::make_unique<Shape3DWindow>(stage_.Shape);
    shapeWindow_->MeshFolder = QString::fromStdString(folder);
    shapeWindow_->PictureFolder = QString::fromStdString(folder);
    QMenu* textMenu = window_->menuBar()->addMenu(QObject::tr("&Text"));
    ShowOnAction(textMenu->addAction(QObject::tr("3D &Shape...")), shapeWindow_.get());
    // Dark windows on a dark stage; the light ones for a bright room, kept for the next start.
    QMenu* viewMenu = window_->menuBar()->addMenu(QObject::tr("&View"));
    QAction* light = viewMenu->addAction(QObject::tr("&Light Windows"));
    light->setCheckable(true);
    light->setChecked(LightThemeChosen(QSettings()));
    QObject::connect(light, &QAction::toggled, [this](bool on) {
      QSettings settings;
      ChooseLightTheme(settings, on);
      ApplyTheme(on, scheme_);
    });
    QObject::connect(outputMenu->addAction(QObject::tr("&Device Information")), &QAction::triggered, [this] {
      FrameRenderer* renderer = RunningRenderer();
      msgBox_.Show(renderer != nullptr ? renderer->GetDevicePropertyInfo()
                                       : std::string("The device is made when playback starts."),
                   MsgBox::OKOnly);
    });
  }

  static void ShowOnAction(QAction* action, QWidget* window) {
    QObject::connect(action, &QAction::triggered, window, [window] {
      window->show();
      window->raise();
    });
  }

  // The effect's picture as the output holds it, for the Effects window's preview.
  QImage GrabEffect() {
    FrameRenderer* renderer = RunningRenderer();
    RenderDevice* device = display_ ? display_->Device() : nullptr;
    TextureDesc desc;
    // Outside a frame the output's context must be made current first.
    if (renderer == nullptr || device == nullptr || !display_->BeginFrame() ||
        !device->GetDesc(renderer->Effect().GetEffectTexture(), desc))
      return {};
    QImage picture;
    device->ReadTexture(renderer->Effect().GetEffectTexture(), [&](const std::uint8_t* top, std::ptrdiff_t stride) {
      picture = FrameToImage(top, stride, desc.Width, desc.Height);
    });
    return picture;
  }

  // The command line's fields act on the forms that own them; without any, the last show plays.
  void StartWithCommandLineOrLastShow() {
    if (!options_.commandLine.empty()) {
      splash_.SetStatus(QStringLiteral("Starting with CommandLine..."));
      StartupCommandTarget target(stage_.Main, splash_);
      CommandLineProcess(options_.commandLine, target);
    } else {
      splash_.SetStatus(QStringLiteral("Loading Last Preset,Playlist and Cue..."));
      std::string ignored;  // no last show (a first start): the factory show stands
      stage_.Show.EngineFileLoad(lastPreset_, ignored);
    }
  }

  // "Ready..." stands a moment, so the operator sees start-up finished, then the splash goes.
  void ShowReadyThenHideSplash() {
    QElapsedTimer ready;
    ready.start();
    while (ready.elapsed() < 500 && !quitting_) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
      QThread::msleep(5);
    }
    splash_.hide();
    QCoreApplication::processEvents();
  }

  const AppOptions& options_;
  SystemClock clock_;
  SeededRandom random_;
  MessageWindow msgBox_;
  Stage stage_;
  FocusTracker focus_;
  OutputClones clones_;
  const std::string lastPreset_;
  QPointer<OutputDisplay> display_;
  std::unique_ptr<QFile> log_;
  QStringList families_;
  bool quitting_ = false;
  UiColourScheme scheme_;
  SplashWindow splash_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<FileMenu> fileMenu_;
  std::unique_ptr<OutputConfigurationWindow> outputWindow_;
  std::unique_ptr<BackgroundsWindow> backgroundsWindow_;
  std::unique_ptr<EffectsWindow> effectsWindow_;
  std::unique_ptr<Shape3DWindow> shapeWindow_;
};

}  // namespace

int RunWindowedProgram(int& argc, char** argv, const AppOptions& options) {
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
  WindowedProgram program(applicationFolder, options);
  return program.Run();
}

}  // namespace lumivane

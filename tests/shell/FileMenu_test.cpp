#include "shell/FileMenu.h"

#include <gtest/gtest.h>

#include <QMainWindow>
#include <QTemporaryDir>
#include <fstream>

#include "forms/MainForm.h"
#include "persistence/ShowFile.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"

namespace lumivane {
namespace {

TEST(FileMenu, SavesOpensAndAsksBeforeDroppingChanges) {
  QTemporaryDir dir;
  test::EngineFixture engine;
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm form(model, engine.text, msg);
  ShowFile show(form);
  QMainWindow window;
  FileMenu menu(window, form, show, msg, dir.path());

  form.AddText(100, 100);
  EXPECT_TRUE(form.Modified);
  const QString path = dir.filePath("mine.xml");
  ASSERT_TRUE(menu.SaveAs(path));
  EXPECT_FALSE(form.Modified);
  EXPECT_EQ(menu.CurrentPath(), path);
  EXPECT_EQ(menu.Recent().value(0), path);

  // Unsaved changes: "No" drops them and starts a new show.
  form.AddText(200, 200);
  msg.answers = {MsgBox::No};
  ASSERT_TRUE(menu.New());
  EXPECT_EQ(msg.shown.back(), FileMenu::kUnsavedQuestion);
  EXPECT_EQ(engine.text.PreviewGetTextCount(), 0);
  EXPECT_TRUE(menu.CurrentPath().isEmpty());

  ASSERT_TRUE(menu.Open(path));
  EXPECT_EQ(engine.text.PreviewGetTextCount(), 1);

  // "Yes" saves them into the current file first.
  form.AddText(300, 300);
  msg.answers = {MsgBox::Yes};
  ASSERT_TRUE(menu.KeepChanges());
  ASSERT_TRUE(menu.Open(path));
  EXPECT_EQ(engine.text.PreviewGetTextCount(), 2);

  // A broken file: one message, and the show in memory stays as it was.
  std::ofstream(dir.filePath("broken.xml").toStdString()) << "<File><Text>";
  const std::size_t messages = msg.shown.size();
  EXPECT_FALSE(menu.Open(dir.filePath("broken.xml")));
  ASSERT_EQ(msg.shown.size(), messages + 1);
  EXPECT_NE(msg.shown.back().find("is not valid XML"), std::string::npos);
  EXPECT_EQ(engine.text.PreviewGetTextCount(), 2);
  EXPECT_EQ(menu.CurrentPath(), path);
}

}  // namespace
}  // namespace lumivane

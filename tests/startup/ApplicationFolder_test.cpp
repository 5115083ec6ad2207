#include "app/ApplicationFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace lumivane {
namespace {

TEST(ApplicationFolder, IsMadeOnFirstUseAndNeverOverwritesTheUsersFiles) {
  QTemporaryDir root;
  const QString folder = root.filePath("deep/inside/Lumivane");
  std::string error;
  const std::string made = PrepareApplicationFolder(folder.toStdString(), error);
  ASSERT_EQ(error, "");
  ASSERT_TRUE(QDir(QString::fromStdString(made)).exists());

  // A file of the user's with a factory name stays as the user left it.
  QFile mine(QDir(folder).filePath("user-file.txt"));
  ASSERT_TRUE(mine.open(QIODevice::WriteOnly));
  mine.write("mine");
  mine.close();
  EXPECT_EQ(PrepareApplicationFolder(folder.toStdString(), error), made);
  ASSERT_TRUE(mine.open(QIODevice::ReadOnly));
  EXPECT_EQ(mine.readAll(), "mine");
}

TEST(ApplicationFolder, AFolderThatCannotBeMadeIsReported) {
  QTemporaryDir root;
  QFile blocker(root.filePath("file"));
  ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
  blocker.close();
  std::string error;
  EXPECT_EQ(PrepareApplicationFolder(root.filePath("file/below").toStdString(), error), "");
  EXPECT_NE(error.find("cannot make the folder"), std::string::npos);
}

}  // namespace
}  // namespace lumivane

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

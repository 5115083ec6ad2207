#include "persistence/XmlDocument.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace lumivane {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class XmlDocumentTest : public ::testing::Test {
 protected:
  fs::path dir = fs::path(::testing::TempDir()) /
                 (std::string("lumivane_xml_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  void SetUp() override { fs::create_directories(dir); }
  void TearDown() override {
    fs::permissions(dir, fs::perms::owner_all, fs::perm_options::add);
    fs::remove_all(dir);
  }
  XmlDocument doc;
  std::string error;
};

TEST_F(XmlDocumentTest, NamesThatBeginWithADigitAreReadAndWrittenBackAsTheyWere) {
  const std::string show =
      "<?xml version=\"1.0\"?>\n<File><Text><TextCount>2</TextCount><1Text><Index>1</Index></1Text>"
      "<12Text><Words><1Word>a &lt;2b&gt;</1Word></Words></12Text></Text>"
      "<!-- a comment that says <3Text> stays --><Keep><![CDATA[<4x>]]></Keep></File>";
  ASSERT_TRUE(doc.Parse(show, error)) << error;
  pugi::xml_node text = Child(doc.Root(), "Text");
  EXPECT_STREQ(Child(Child(text, "1Text"), "Index").text().get(), "1");
  EXPECT_STREQ(Child(Child(Child(text, "12Text"), "Words"), "1Word").text().get(), "a <2b>");

  const std::string written = doc.ToString();
  EXPECT_NE(written.find("<1Text>"), std::string::npos);
  EXPECT_NE(written.find("</12Text>"), std::string::npos);
  EXPECT_NE(written.find("a &lt;2b&gt;"), std::string::npos);
  EXPECT_NE(written.find("<!-- a comment that says <3Text> stays -->"), std::string::npos);
  EXPECT_NE(written.find("<![CDATA[<4x>]]>"), std::string::npos);
  EXPECT_EQ(written.find("lv-digit-"), std::string::npos);

  // And the written text reads back to the same document.
  XmlDocument again;
  ASSERT_TRUE(again.Parse(written, error)) << error;
  EXPECT_EQ(again.ToString(), written);
}

// A save streams the file in pieces; a numbered name cut between two pieces must still lose its
// DOM prefix.
TEST_F(XmlDocumentTest, ALargeSaveWritesWhatToStringGives) {
  doc.New();
  pugi::xml_node words = EnsureChild(doc.Root(), "Words");
  for (int i = 1; i <= 5000; ++i) AppendValue(words, std::to_string(i) + "Word", std::string(static_cast<std::size_t>(i % 37), 'w'));
  const fs::path file = dir / "large.xml";
  ASSERT_TRUE(doc.Save(file.string(), error)) << error;
  const std::string saved = ReadAll(file);
  EXPECT_GT(saved.size(), 200000u);
  EXPECT_EQ(saved, doc.ToString());
  EXPECT_EQ(saved.find("lv-digit-"), std::string::npos);
  EXPECT_NE(saved.find("<4999Word>"), std::string::npos);
}

TEST_F(XmlDocumentTest, BadInputIsRefusedWithOneClearLineAndAnEmptyDocument) {
  for (const std::string& bad :
       {std::string(""), std::string("<File><Text>"), std::string("not xml at all"), std::string("<Show/>"),
        std::string("<File>\0</File>", 15), std::string("<File><a></b></File>")}) {
    EXPECT_FALSE(doc.Parse(bad, error)) << bad;
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(error.find('\n'), std::string::npos);
    EXPECT_FALSE(doc.Root());
  }
  EXPECT_FALSE(doc.Parse("<Show/>", error));
  EXPECT_NE(error.find("root element is \"Show\""), std::string::npos);
  EXPECT_FALSE(doc.Open((dir / "missing.xml").string(), error));
  EXPECT_NE(error.find("cannot be opened"), std::string::npos);
}

TEST_F(XmlDocumentTest, SavesReplaceTheFileWholeAndAFailedSaveLeavesTheOldOne) {
  const fs::path file = dir / "show.xml";
  doc.New();
  AppendValue(doc.Root(), "Note", "first");
  ASSERT_TRUE(doc.Save(file.string(), error)) << error;
  const std::string first = ReadAll(file);
  EXPECT_NE(first.find("<Note>first</Note>"), std::string::npos);

  AppendValue(doc.Root(), "1Text", "second");
  ASSERT_TRUE(doc.Save(file.string(), error)) << error;
  EXPECT_NE(ReadAll(file).find("<1Text>second</1Text>"), std::string::npos);

  if (::geteuid() != 0) {  // root writes through permissions
    const std::string before = ReadAll(file);
    fs::permissions(dir, fs::perms::owner_write, fs::perm_options::remove);
    EXPECT_FALSE(doc.Save(file.string(), error));
    EXPECT_NE(error.find("unchanged"), std::string::npos);
    fs::permissions(dir, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(ReadAll(file), before);
  }
  // A failure after the temporary file is written (the name is taken by a folder): the temporary
  // file goes, and the folder stays.
  fs::create_directories(dir / "taken.xml");
  EXPECT_FALSE(doc.Save((dir / "taken.xml").string(), error));
  EXPECT_TRUE(fs::is_directory(dir / "taken.xml"));
  // A folder that does not exist: nothing is written anywhere, the message says where.
  EXPECT_FALSE(doc.Save((dir / "no" / "such" / "show.xml").string(), error));
  EXPECT_NE(error.find("cannot be saved"), std::string::npos);
  // No temporary files are left behind.
  for (const auto& entry : fs::directory_iterator(dir))
    EXPECT_EQ(entry.path().filename().string().rfind(".lumivane-save-", 0), std::string::npos);
}

}  // namespace
}  // namespace lumivane

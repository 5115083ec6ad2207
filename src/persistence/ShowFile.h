#pragma once

#include <memory>
#include <string>

namespace lumivane {

class MainForm;
class XmlDocument;

// Show files as a whole: the header, the global settings, the text list, and every block this
// build cannot interpret yet, kept as it was read and written back on save, so a show made
// elsewhere loses nothing here.
class ShowFile {
 public:
  explicit ShowFile(MainForm& form);
  ~ShowFile();

  // Reads a show into the editor's list (the locked copy while the output is locked) and the
  // controls it sets. On failure nothing in memory changes and `error` says why in one line.
  bool EngineFileLoad(const std::string& path, std::string& error);
  // Writes the show whole or not at all; a failed save leaves the old file as it was.
  bool EngineFileSave(const std::string& path, std::string& error);
  // A new show: nothing of the last loaded one is kept.
  void Forget();

 private:
  MainForm& form_;
  // The blocks of the last loaded show that this build does not read, in their order.
  std::unique_ptr<XmlDocument> kept_;
};

}  // namespace lumivane

#include "persistence/XmlDocument.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace lumivane {

namespace {

constexpr std::string_view kDigitPrefix = "lv-digit-";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Gives element names that begin with a digit the DOM prefix, leaving comments, CDATA, processing
// instructions and declarations as they are.
std::string EscapeDigitNames(std::string_view in) {
  std::string out;
  out.reserve(in.size() + in.size() / 16);
  std::size_t i = 0;
  auto copyThrough = [&](std::string_view terminator) {
    const std::size_t end = in.find(terminator, i);
    const std::size_t stop = end == std::string_view::npos ? in.size() : end + terminator.size();
    out.append(in.substr(i, stop - i));
    i = stop;
  };
  while (i < in.size()) {
    const std::size_t lt = in.find('<', i);
    if (lt == std::string_view::npos) {
      out.append(in.substr(i));
      break;
    }
    out.append(in.substr(i, lt - i));
    i = lt;
    const std::string_view rest = in.substr(i);
    if (rest.substr(0, 4) == "<!--") {
      copyThrough("-->");
    } else if (rest.substr(0, 9) == "<![CDATA[") {
      copyThrough("]]>");
    } else if (rest.substr(0, 2) == "<?") {
      copyThrough("?>");
    } else if (rest.substr(0, 2) == "<!") {
      copyThrough(">");
    } else {
      const std::size_t nameAt = rest.size() > 1 && rest[1] == '/' ? 2 : 1;
      out.append(rest.substr(0, nameAt));
      i += nameAt;
      if (i < in.size() && IsDigit(in[i])) out.append(kDigitPrefix);
    }
  }
  return out;
}

// In place over `size` characters, answering the new size: names only lose their prefix, so the
// text never grows. A cut at a '<' keeps every name whole.
std::size_t UnescapeDigitNames(char* text, std::size_t size) {
  const std::string_view all(text, size);
  std::size_t read = 0, write = 0;
  for (;;) {
    const std::size_t lt = all.find('<', read);
    std::size_t nameAt = lt == std::string_view::npos ? size : lt + 1;
    if (nameAt < size && text[nameAt] == '/') ++nameAt;
    if (write != read) std::memmove(text + write, text + read, nameAt - read);
    write += nameAt - read;
    if (lt == std::string_view::npos) return write;
    read = nameAt;
    if (all.compare(read, kDigitPrefix.size(), kDigitPrefix) == 0) read += kDigitPrefix.size();
  }
}

// pugixml's output straight into one string, without a stream's buffer and its copy.
struct StringWriter final : pugi::xml_writer {
  std::string text;
  void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
};

// pugixml's output straight into a file through a small buffer: a show of thousands of texts is
// megabytes, and building it whole in memory first cost more than writing it.
class FileWriter final : public pugi::xml_writer {
 public:
  explicit FileWriter(int fd) : fd_(fd) { buffer_.reserve(kChunk + 4096); }
  void write(const void* data, std::size_t size) override {
    buffer_.append(static_cast<const char*>(data), size);
    if (buffer_.size() >= kChunk) Flush(false);
  }
  // Writes what is whole: all of it when `last`, else up to the last '<', whose name may go on in
  // the next piece. Answers 0 or the errno of the failed write.
  int Flush(bool last) {
    const std::size_t lt = buffer_.rfind('<');
    const std::size_t cut = last || lt == std::string::npos || lt == 0 ? buffer_.size() : lt;
    const std::size_t size = UnescapeDigitNames(buffer_.data(), cut);
    for (std::size_t written = 0; failure_ == 0 && written < size;) {
      const ssize_t n = ::write(fd_, buffer_.data() + written, size - written);
      if (n >= 0)
        written += static_cast<std::size_t>(n);
      else if (errno != EINTR)
        failure_ = errno;
    }
    buffer_.erase(0, cut);
    return failure_;
  }

 private:
  static constexpr std::size_t kChunk = 64 * 1024;
  int fd_;
  int failure_ = 0;
  std::string buffer_;
};

std::string Reason(int err) { return std::strerror(err); }

}  // namespace

std::string XmlDocument::ChildName(std::string_view name) {
  if (!name.empty() && IsDigit(name.front())) return std::string(kDigitPrefix) + std::string(name);
  return std::string(name);
}

std::string_view XmlDocument::FileName(std::string_view domName) {
  if (domName.substr(0, kDigitPrefix.size()) == kDigitPrefix) domName.remove_prefix(kDigitPrefix.size());
  return domName;
}

void XmlDocument::New() {
  dom_.reset();
  dom_.append_child(kRootName);
}

bool XmlDocument::Open(const std::string& path, std::string& error) {
  dom_.reset();
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "The file \"" + path + "\" cannot be opened: " + Reason(errno) + ".";
    return false;
  }
  in.seekg(0, std::ios::end);
  const std::streamoff size = in.tellg();
  if (size < 0 || static_cast<std::uint64_t>(size) > kMaxFileBytes) {
    error = "The file \"" + path + "\" is too large to be a show file.";
    return false;
  }
  in.seekg(0);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!in.read(bytes.data(), size)) {
    error = "The file \"" + path + "\" cannot be read whole.";
    return false;
  }
  if (!Parse(bytes, error)) {
    error = "The file \"" + path + "\" " + error;
    return false;
  }
  return true;
}

bool XmlDocument::Parse(std::string_view text, std::string& error) {
  dom_.reset();
  if (text.find('\0') != std::string_view::npos) {
    error = "is not a show file (it holds binary data).";
    return false;
  }
  const std::string escaped = EscapeDigitNames(text);
  const pugi::xml_parse_result result =
      dom_.load_buffer(escaped.data(), escaped.size(), pugi::parse_default | pugi::parse_comments, pugi::encoding_auto);
  if (!result) {
    error = std::string("is not valid XML: ") + result.description() + " (near byte " +
            std::to_string(result.offset) + ").";
    dom_.reset();
    return false;
  }
  if (!Root()) {
    const char* found = dom_.first_child() ? dom_.first_child().name() : "";
    error = std::string("is not a show file (its root element is \"") + std::string(FileName(found)) +
            "\", not \"" + kRootName + "\").";
    dom_.reset();
    return false;
  }
  return true;
}

std::string XmlDocument::ToString() const {
  StringWriter out;
  dom_.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
  out.text.resize(UnescapeDigitNames(out.text.data(), out.text.size()));
  return std::move(out.text);
}

bool XmlDocument::Save(const std::string& path, std::string& error) const {
  const std::size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
  std::string temp = (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + ".lumivane-save-XXXXXX";
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) {
    error = "The show cannot be saved to \"" + path + "\": " + Reason(errno) + ".";
    return false;
  }
  FileWriter out(fd);
  dom_.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
  int failure = out.Flush(true);
  bool ok = failure == 0;
  if (ok && ::fsync(fd) != 0) ok = false, failure = errno;
  if (::close(fd) != 0 && ok) ok = false, failure = errno;
  // Keep the permissions an existing file had; a new one gets the usual 0644 less the umask.
  struct stat old {};
  if (ok) {
    const mode_t umaskNow = ::umask(0);
    ::umask(umaskNow);
    ::chmod(temp.c_str(), ::stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : (0644 & ~umaskNow));
  }
  if (ok && std::rename(temp.c_str(), path.c_str()) != 0) ok = false, failure = errno;
  if (!ok) {
    std::remove(temp.c_str());
    error = "The show cannot be saved to \"" + path + "\": " + Reason(failure) + ". The file there is unchanged.";
    return false;
  }
  // The rename is durable once the folder is synced.
  const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
  return true;
}

pugi::xml_node Child(pugi::xml_node parent, std::string_view name) {
  return parent.child(XmlDocument::ChildName(name).c_str());
}

pugi::xml_node EnsureChild(pugi::xml_node parent, std::string_view name) {
  const std::string domName = XmlDocument::ChildName(name);
  pugi::xml_node node = parent.child(domName.c_str());
  return node ? node : parent.append_child(domName.c_str());
}

pugi::xml_node AppendValue(pugi::xml_node parent, std::string_view name, std::string_view value) {
  pugi::xml_node node = parent.append_child(XmlDocument::ChildName(name).c_str());
  node.text().set(std::string(value).c_str());
  return node;
}

pugi::xml_node AppendNumber(pugi::xml_node parent, std::string_view name, double value) {
  return AppendValue(parent, name, FormatNumber(value));
}

pugi::xml_node AppendFlag(pugi::xml_node parent, std::string_view name, bool value) {
  return AppendValue(parent, name, value ? "1" : "0");
}

std::optional<double> ChildNumber(pugi::xml_node parent, std::string_view name, Decimal decimal) {
  const pugi::xml_node node = Child(parent, name);
  if (!node) return std::nullopt;
  if (decimal == Decimal::Point) return ParseNumber(node.text().get());
  std::string text = node.text().get();
  std::replace(text.begin(), text.end(), ',', '.');
  return ParseNumber(text);
}

}  // namespace lumivane

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace lumivane {

// An immutable list of strings that copies by sharing. Word lists can hold hundreds of thousands
// of entries and travel with every copy of a text record (live, locked, the editor's), so a copy
// must not duplicate them; a change makes a new list.
class StringList {
 public:
  StringList() = default;
  explicit StringList(std::vector<std::string> items)
      : items_(items.empty() ? nullptr : std::make_shared<const std::vector<std::string>>(std::move(items))) {}

  std::size_t size() const noexcept { return items_ ? items_->size() : 0; }
  bool empty() const noexcept { return size() == 0; }
  // Zero-based; out of range reads as empty.
  const std::string& operator[](std::size_t i) const noexcept { return i < size() ? (*items_)[i] : Empty(); }
  const std::string* begin() const noexcept { return items_ ? items_->data() : nullptr; }
  const std::string* end() const noexcept { return items_ ? items_->data() + items_->size() : nullptr; }
  bool SharesWith(const StringList& other) const noexcept { return items_ == other.items_; }
  friend bool operator==(const StringList& a, const StringList& b) {
    return a.items_ == b.items_ || (a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin()));
  }

 private:
  static const std::string& Empty() noexcept {
    static const std::string empty;
    return empty;
  }
  std::shared_ptr<const std::vector<std::string>> items_;
};

}  // namespace lumivane

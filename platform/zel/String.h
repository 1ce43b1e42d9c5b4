#pragma once
// Reference-counted immutable byte string. Copies share one heap block; the empty
// string holds no block. The bytes are always followed by a NUL so charPtr() can be
// handed to C interfaces, but a String may itself contain NULs.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zel {

class String {
 public:
  using IteratorConst = const char*;

  String() = default;
  String(const char* s) : String(std::string_view(s ? s : "")) {}
  String(std::string_view s);
  String(const std::string& s) : String(std::string_view(s)) {}
  String(const char* data, size_t len) : String(std::string_view(data, len)) {}
  String(const String& o) : rep_(o.rep_) { ref(); }
  String(String&& o) noexcept : rep_(o.rep_) { o.rep_ = nullptr; }
  ~String() { unref(); }
  String& operator=(const String& o);
  String& operator=(String&& o) noexcept;

  const char* charPtr() const { return rep_ ? rep_->bytes : emptyBytes_; }
  size_t size() const { return rep_ ? rep_->size : 0; }
  bool empty() const { return size() == 0; }
  std::string_view view() const { return {charPtr(), size()}; }
  std::string str() const { return std::string(view()); }
  IteratorConst begin() const { return charPtr(); }
  IteratorConst end() const { return charPtr() + size(); }

  uint32_t hash() const;

  friend bool operator==(const String& a, const String& b) {
    return a.rep_ == b.rep_ || a.view() == b.view();
  }
  friend auto operator<=>(const String& a, const String& b) { return a.view() <=> b.view(); }
  friend bool operator==(const String& a, const char* b) { return a.view() == b; }
  friend String operator+(const String& a, std::string_view b);

 private:
  struct Rep {
    uint32_t refs;
    uint32_t size;
    char bytes[1];
  };
  // What every empty String points at. One object for the whole process: a "" literal
  // in this header may have a different address in each binary, so begin() and end()
  // of one empty String could come from different copies.
  static const char emptyBytes_[1];

  void ref() const {
    if (rep_) ++rep_->refs;
  }
  // Inline for the common empty string; the last reference frees the block.
  void unref() {
    if (rep_) release();
  }
  void release();

  Rep* rep_ = nullptr;
};

std::ostream& operator<<(std::ostream& os, const String& s);

// The name of an entity.
using Name = String;

}  // namespace Zel

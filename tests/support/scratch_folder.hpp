#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace test_support {

/// Every test works in a folder of its own, with the module as a run begins.
class InScratchFolder : public ::testing::Test {
 protected:
  InScratchFolder();
  ~InScratchFolder() override;

 private:
  std::string folder_;
  std::string before_;
};

/// The bytes of a file, put together by hand, and not by anything of the library's.
class Bytes {
 public:
  Bytes& i4(std::int32_t value) { return put(value); }
  Bytes& i8(std::int64_t value) { return put(value); }
  Bytes& r4(float value) { return put(value); }
  Bytes& r8(double value) { return put(value); }
  Bytes& i4s(std::initializer_list<std::int32_t> all) {
    for (const std::int32_t value : all) i4(value);
    return *this;
  }
  Bytes& r4s(std::initializer_list<float> all) {
    for (const float value : all) r4(value);
    return *this;
  }
  Bytes& r8s(std::initializer_list<double> all) {
    for (const double value : all) r8(value);
    return *this;
  }
  /// Another run of bytes between two length markers.
  Bytes& record(const Bytes& payload) {
    const auto length = static_cast<std::int32_t>(payload.text_.size());
    i4(length);
    text_ += payload.text_;
    return i4(length);
  }
  /// The same between markers of 8 bytes.
  Bytes& wide_record(const Bytes& payload) {
    const auto length = static_cast<std::int64_t>(payload.text_.size());
    return i8(length).append(payload).i8(length);
  }
  Bytes& append(const Bytes& more) {
    text_ += more.text_;
    return *this;
  }

  [[nodiscard]] const std::string& str() const { return text_; }

 private:
  template <class T>
  Bytes& put(T value) {
    text_.append(reinterpret_cast<const char*>(&value), sizeof value);
    return *this;
  }
  std::string text_;
};

void write_file(const std::string& name, const std::string& content);
inline void write_file(const std::string& name, const Bytes& content) {
  write_file(name, content.str());
}
[[nodiscard]] std::string read_file(const std::string& name);
[[nodiscard]] bool exists(const std::string& name);

/// Whether this process has the file open, as the system sees it.
[[nodiscard]] bool is_open(const std::string& name);

}  // namespace test_support

#include "tests/support/TraceCapture.h"

#include <algorithm>

namespace korvo::test {

TraceCapture::TraceCapture() : previous_(zgeo::UTools::_setTraceSink(this)) {}

TraceCapture::~TraceCapture() {
  zgeo::UTools::_setTraceSink(previous_);
  for (const std::wstring& text : lines_) {
    ADD_FAILURE() << "unclaimed trace line: \"" << narrow(text) << '"';
  }
}

std::vector<std::wstring> TraceCapture::lines() const {
  const std::lock_guard lock(mutex_);
  return lines_;
}

bool TraceCapture::claim(const std::wstring& line) {
  const std::lock_guard lock(mutex_);
  const auto found = std::find(lines_.begin(), lines_.end(), line);
  if (found == lines_.end()) return false;
  lines_.erase(found);
  return true;
}

int TraceCapture::claimAll(const std::wstring& prefix) {
  const std::lock_guard lock(mutex_);
  const auto starts = [&](const std::wstring& text) { return text.starts_with(prefix); };
  return static_cast<int>(std::erase_if(lines_, starts));
}

void TraceCapture::line(const std::wstring& text, std::chrono::system_clock::time_point) {
  const std::lock_guard lock(mutex_);
  lines_.push_back(text);
}

std::string narrow(const std::wstring& text) {
  std::string bytes;
  for (const wchar_t character : text) {
    const auto code = static_cast<char32_t>(character);
    const auto tail = [&](int shift) {
      bytes += static_cast<char>(0x80 | ((code >> shift) & 0x3f));
    };
    if (code < 0x80) {
      bytes += static_cast<char>(code);
    } else if (code < 0x800) {
      bytes += static_cast<char>(0xc0 | (code >> 6));
      tail(0);
    } else if (code < 0x10000) {
      bytes += static_cast<char>(0xe0 | (code >> 12));
      tail(6), tail(0);
    } else {
      bytes += static_cast<char>(0xf0 | (code >> 18));
      tail(12), tail(6), tail(0);
    }
  }
  return bytes;
}

}  // namespace korvo::test

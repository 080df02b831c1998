#include "platform/zgeo/UTools.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <memory>
#include <optional>
#include <ostream>
#include <string_view>
#include <utility>

#if defined(_WIN32) || defined(__APPLE__)
#include <locale.h>
#endif
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace zgeo {
namespace {

// --- Characters

constexpr std::wstring_view kWhiteSpace = L" \t\r\n\v\f";

/// The letters of ASCII and Latin-1 that have a partner there: sharp s and y with diaeresis have
/// none, and the multiplication and division signs among them are no letters.
constexpr wchar_t lowered(wchar_t c) {
  const bool upper = (c >= L'A' && c <= L'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
  return upper ? static_cast<wchar_t>(c + 0x20) : c;
}

constexpr wchar_t raised(wchar_t c) {
  const bool lower = (c >= L'a' && c <= L'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7);
  return lower ? static_cast<wchar_t>(c - 0x20) : c;
}

constexpr bool kUtf16 = sizeof(wchar_t) == 2;

constexpr bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool isCharacter(char32_t c) {
  return c <= 0x10FFFF && !isHighSurrogate(c) && !isLowSurrogate(c);
}

void appendWide(std::wstring& text, char32_t c) {
  if (kUtf16 && c > 0xFFFF) {
    text += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
    text += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  } else {
    text += static_cast<wchar_t>(c);
  }
}

/// Length of the UTF-8 sequence that `lead` starts, 0 when it starts none.
constexpr std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// Removes the first UTF-8 character from `bytes` and gives it; nothing when they start with none.
/// Longer spellings of a character than needed are no UTF-8.
std::optional<char32_t> takeUtf8(std::string_view& bytes) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(bytes.front());
  const std::size_t length = sequenceLength(lead);
  if (length == 0 || length > bytes.size()) return std::nullopt;
  char32_t c = length == 1 ? lead : lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(bytes[i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    c = c << 6 | (next & 0x3F);
  }
  bytes.remove_prefix(length);
  if (c < kLeast[length] || !isCharacter(c)) return std::nullopt;
  return c;
}

std::optional<std::wstring> fromUtf8(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto c = takeUtf8(bytes);
    if (!c) return std::nullopt;
    appendWide(text, *c);
  }
  return text;
}

std::wstring fromLatin1(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size());
  for (const char byte : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return text;
}

/// Removes the first character from `text` and gives it; the replacement character for a value
/// that is none, so that what is written is UTF-8 whatever was traced.
char32_t takeWide(std::wstring_view& text) {
  auto c = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  if (kUtf16 && isHighSurrogate(c) && !text.empty() &&
      isLowSurrogate(static_cast<char32_t>(text.front()))) {
    c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(text.front()) - 0xDC00);
    text.remove_prefix(1);
  }
  return isCharacter(c) ? c : U'\uFFFD';
}

void appendUtf8(std::string& bytes, char32_t c) {
  const auto put = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      put(0xE0 | c >> 12);
    } else {
      put(0xF0 | c >> 18);
      put(0x80 | (c >> 12 & 0x3F));
    }
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

// --- Formatting

/// A format for the C library of this platform: "%s" and "%S" become "%ls", the one spelling of
/// wide text that all of them share. Flags, width and precision stay; "%hs" stays narrow.
std::wstring portableFormat(std::wstring_view format) {
  constexpr std::wstring_view kBeforeConversion = L"-+ #0'123456789.*$";
  std::wstring result;
  result.reserve(format.size() + 8);
  for (std::size_t i = 0; i < format.size(); ++i) {
    result += format[i];
    if (format[i] != L'%') continue;
    while (++i < format.size() && kBeforeConversion.find(format[i]) != std::wstring_view::npos) {
      result += format[i];
    }
    if (i == format.size()) break;
    const bool wideText = format[i] == L's' || format[i] == L'S';
    result += wideText ? L"ls" : std::wstring(1, format[i]);
  }
  return result;
}

#if defined(_WIN32)

int printInto(std::wstring& text, const wchar_t* format, va_list arguments) {
  static const _locale_t cLocale = _create_locale(LC_ALL, "C");
  return _vsnwprintf_l(text.data(), text.size(), format, cLocale, arguments);
}

#else

/// The C locale for this thread as long as it lives: a host with a decimal comma keeps it, and no
/// other thread notices, as it would with setlocale.
class CLocaleScope {
 public:
  CLocaleScope() : former_(uselocale(cLocale())) {}
  ~CLocaleScope() { uselocale(former_); }
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  static locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
    return locale;
  }

  locale_t former_;
};

int printInto(std::wstring& text, const wchar_t* format, va_list arguments) {
  const CLocaleScope scope;
  return std::vswprintf(text.data(), text.size(), format, arguments);
}

#endif

/// Prints into buffers twice as long each time: vswprintf does not tell how long a text is, only
/// that it did not fit, by no error or by EOVERFLOW. The limit ends it for an absurd width.
std::wstring formattedText(const wchar_t* format, va_list arguments) {
  constexpr std::size_t kLongest = std::size_t{1} << 24;
  if (format == nullptr) return {};
  const std::wstring portable = portableFormat(format);
  std::wstring text(256, L'\0');
  for (;;) {
    va_list copy;
    va_copy(copy, arguments);
    errno = 0;
    const int length = printInto(text, portable.c_str(), copy);
    va_end(copy);
    if (length >= 0) {
      text.resize(static_cast<std::size_t>(length));
      return text;
    }
    if ((errno != 0 && errno != EOVERFLOW) || text.size() >= kLongest) return {};
    text.assign(2 * text.size(), L'\0');
  }
}

// --- Trace

std::atomic<UTraceSink*> theSink{nullptr};

/// A pointer, which stays valid to the very end of the thread: libraries trace while they are
/// unloaded, after the thread's objects with destructors are gone.
thread_local std::wstring* openLine = nullptr;

std::unique_ptr<std::wstring> takeOpenLine() {
  return std::unique_ptr<std::wstring>(std::exchange(openLine, nullptr));
}

/// Frees a line that its thread left open.
struct DropLineAtThreadEnd {
  ~DropLineAtThreadEnd() { takeOpenLine(); }
};

void append(const std::wstring& text) {
  thread_local const DropLineAtThreadEnd drop;
  if (openLine == nullptr) openLine = new std::wstring;
  *openLine += text;
}

/// Without a text it needs no memory: a line can be ended when there is none left.
void endLine(const std::wstring& text) {
  const auto line = takeOpenLine();
  UTraceSink* const sink = theSink.load();
  if (sink == nullptr) return;
  if (line) *line += text;
  sink->line(line ? *line : text, std::chrono::system_clock::now());
}

}  // namespace

UTraceSink::~UTraceSink() = default;

void UStreamTraceSink::line(const std::wstring& text, std::chrono::system_clock::time_point) {
  std::string bytes;
  for (std::wstring_view rest = text; !rest.empty();) appendUtf8(bytes, takeWide(rest));
  stream_ << bytes << '\n';
}

std::vector<std::wstring> UTools::_split(const std::wstring& text, wchar_t separator,
                                         bool keepEmpty) {
  std::vector<std::wstring> parts;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    if (keepEmpty || end > start) parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

std::wstring UTools::_simplified(const std::wstring& text, bool lower, bool upper) {
  std::wstring result;
  result.reserve(text.size());
  bool gap = false;
  for (const wchar_t c : text) {
    if (kWhiteSpace.find(c) != std::wstring_view::npos) {
      gap = !result.empty();
      continue;
    }
    if (gap) result += L' ';
    gap = false;
    result += lower ? lowered(c) : upper ? raised(c) : c;
  }
  return result;
}

std::wstring UTools::_low(const std::wstring& text) {
  std::wstring result = text;
  for (wchar_t& c : result) c = lowered(c);
  return result;
}

std::wstring UTools::_up(const std::wstring& text) {
  std::wstring result = text;
  for (wchar_t& c : result) c = raised(c);
  return result;
}

std::wstring UTools::_removeFrom(const std::wstring& text, const std::wstring& part) {
  std::wstring result = text;
  const std::size_t at = result.find(part);
  if (at != std::wstring::npos) result.erase(at, part.size());
  return result;
}

std::wstring UTools::_toWS(const char* text, int length) {
  if (text == nullptr) return {};
  const std::size_t size = length > 0 ? static_cast<std::size_t>(length) : std::strlen(text);
  const std::string_view bytes(text, size);
  auto wide = fromUtf8(bytes);
  return wide ? *std::move(wide) : fromLatin1(bytes);
}

std::wstring UTools::_formatted(const wchar_t* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::wstring text = formattedText(format, arguments);
  va_end(arguments);
  return text;
}

void UTools::_trace(const wchar_t* format, ...) {
  if (!_isTracing()) return endLine({});
  va_list arguments;
  va_start(arguments, format);
  endLine(formattedText(format, arguments));
  va_end(arguments);
}

void UTools::_traceTS(const wchar_t* format, ...) {
  if (!_isTracing()) return;
  va_list arguments;
  va_start(arguments, format);
  append(formattedText(format, arguments));
  va_end(arguments);
}

void UTools::_traceTF() { endLine({}); }

UTraceSink* UTools::_setTraceSink(UTraceSink* sink) { return theSink.exchange(sink); }

bool UTools::_isTracing() { return theSink.load() != nullptr; }

}  // namespace zgeo

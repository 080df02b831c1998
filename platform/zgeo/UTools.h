#pragma once

#include <chrono>
#include <iosfwd>
#include <string>
#include <vector>

#include "platform/zgeo/Export.h"

namespace zgeo {

/// Where trace lines go. The host derives one and sets it with `UTools::_setTraceSink`.
class KORVO_COLLISIONUTILS_API UTraceSink {
 public:
  virtual ~UTraceSink();

  /// One ended trace line, without a line feed of its own (a text may hold some), and when it
  /// ended. Called on the thread that traced; must not throw and must not trace.
  virtual void line(const std::wstring& text, std::chrono::system_clock::time_point time) = 0;
};

/// A ready sink: writes each line as UTF-8 with a line feed to a narrow stream.
/// Not synchronised: lines from several threads need a sink of the host's own.
class KORVO_COLLISIONUTILS_API UStreamTraceSink : public UTraceSink {
 public:
  explicit UStreamTraceSink(std::ostream& stream) : stream_(stream) {}
  void line(const std::wstring& text, std::chrono::system_clock::time_point time) override;

 private:
  std::ostream& stream_;
};

/// String and trace helpers.
///
/// Case is folded by a fixed table (ASCII and the Latin-1 letters) and numbers are formatted in
/// the C locale, whatever the host has set. Formats are printf's for wide text, with one change:
/// `%s` and `%S` both take wide text, on every platform.
class KORVO_COLLISIONUTILS_API UTools {
 public:
  /// Parts of `text` between the separators.
  /// @param keepEmpty  True keeps empty parts (an empty text gives one empty part), false drops
  ///                   them (an empty text gives none).
  static std::vector<std::wstring> _split(const std::wstring& text, wchar_t separator,
                                          bool keepEmpty);

  /// Trimmed text in which every run of blank, tab, CR, LF, VT and FF is one blank.
  /// @param lower,upper  True folds the case of the result; lower wins when both are true.
  static std::wstring _simplified(const std::wstring& text, bool lower, bool upper);

  static std::wstring _low(const std::wstring& text);  ///< In lower case.
  static std::wstring _up(const std::wstring& text);   ///< In upper case.

  /// `text` without the first occurrence of `part`; case-sensitive. An empty part changes nothing.
  static std::wstring _removeFrom(const std::wstring& text, const std::wstring& part);

  /// Wide text of UTF-8 bytes; when the whole is not valid UTF-8, of Latin-1 bytes. Null gives the
  /// empty text.
  /// @param length  Number of bytes (a NUL among them is a character), or 0 and below: up to the
  ///                terminating NUL.
  static std::wstring _toWS(const char* text, int length);

  /// printf-style wide text: `%s`, `%S` and `%ls` take wide text, `%hs` narrow text, the rest is
  /// the C library's. A null text argument prints what the C library makes of it ("(null)").
  /// @errors  A null or malformed format, a narrow text that does not convert and a result of 2^24
  ///          characters or more give the empty text.
  static std::wstring _formatted(const wchar_t* format, ...);

  /// Formats and writes a whole line; on an open line it appends to that line and ends it.
  /// A line goes to the sink that is set when it ends; one that ends without a sink is dropped.
  static void _trace(const wchar_t* format, ...);
  /// Formats and appends to the calling thread's open line, opening one when there is none. Without
  /// a sink it opens no line. A line still open when its thread ends is dropped.
  static void _traceTS(const wchar_t* format, ...);
  /// Ends the calling thread's open line; an empty line when none is open.
  static void _traceTF();

  /// Sets where lines go, for all threads; null (as at the start) drops them, then nothing is
  /// formatted or allocated.
  /// @owner   The sink stays the caller's and must outlive its use. Libraries trace when they are
  ///          unloaded, at the end of the program after `main`: unset the sink before it dies.
  /// @return  The sink that was set before, or null.
  static UTraceSink* _setTraceSink(UTraceSink* sink);

  /// Whether a sink is set: callers that would do work only to trace ask first.
  static bool _isTracing();
};

}  // namespace zgeo

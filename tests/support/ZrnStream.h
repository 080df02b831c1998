#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace korvo::test {

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/// A stream that can be positioned, over the bytes of `text`.
inline Stream streamOf(const std::string& text) {
  Stream stream(std::tmpfile());
  if (!stream || std::fwrite(text.data(), 1, text.size(), stream.get()) != text.size()) {
    throw std::runtime_error("no temporary file");
  }
  std::rewind(stream.get());
  return stream;
}

/// What is left in the stream, up to its end.
inline std::string restOf(std::FILE* stream) {
  std::string rest;
  for (int c; (c = std::getc(stream)) != EOF;) rest += static_cast<char>(c);
  return rest;
}

}  // namespace korvo::test

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO

#include <stb/stb_image_write.h>

#include <stdexcept>

#include "toolkit/export/Picture.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

namespace korvo {
namespace {

constexpr int kMostPixels = 16384;  // each way

void check(int pixels) {
  if (pixels < 1 || pixels > kMostPixels) {
    throw std::length_error("expected a picture of 1 to 16384 pixels each way");
  }
}

void pass(void* file, void* bytes, int length) {
  static_cast<WholeFile*>(file)->write(
      {static_cast<const char*>(bytes), static_cast<std::size_t>(length)});
}

}  // namespace

void writePng(const std::filesystem::path& path, std::span<const Body> bodies, PictureSize size) {
  check(size.width);
  check(size.height);
  WholeFile file(path);
  const exporting::Picture picture = exporting::drawn(bodies, size);
  if (!stbi_write_png_to_func(pass, &file, size.width, size.height, 3, picture.bytes.data(),
                              3 * size.width)) {
    throw std::bad_alloc();
  }
  file.commit();
}

}  // namespace korvo

#include "benchmarks/Scratch.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>

namespace korvo::bench {

namespace fs = std::filesystem;

Scratch::Scratch(const char* ending) {
  static int count = 0;
  const std::string name =
      "korvo_bench_" + std::to_string(getpid()) + "_" + std::to_string(++count);
  path_ = (fs::temp_directory_path() / (name + ending)).string();
}

Scratch::~Scratch() {
  std::error_code error;
  fs::remove(path_, error);
}

void Scratch::write(std::string_view bytes) const {
  std::FILE* file = std::fopen(path_.c_str(), "wb");
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
    std::perror(path_.c_str());
    std::exit(2);
  }
  std::fclose(file);
}

double Scratch::megabytes() const { return static_cast<double>(fs::file_size(path_)) * 1e-6; }

namespace {

std::string bodiesOn(std::initializer_list<const char*> axes, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += std::string("lien=") + axes.begin()[static_cast<std::size_t>(i) % axes.size()];
    text += "\ngeom\n";
  }
  return text;
}

}  // namespace

// The table's bodies come before the head's axes, as in a file ordered by what carries what: so the
// names of the head are looked up behind half of the elements.
std::string bodiesText(int elements) {
  const int table = (elements - 8) / 2, head = elements - 8 - table;
  return "frame=z\n"
         "rotation=A,+x,0,0,0,-0.5,60\n"
         "rotation=C,+z,0,0,0,0,0\n"
         "part=x,y,0,0,0\n" +
         bodiesOn({"A", "C"}, table) +
         "lien=BATI\n"
         "axis=X,+x\n"
         "axis=Y,+y\n"
         "axis=Z,+z\n"
         "tool=z,0,0,120\n" +
         bodiesOn({"X", "Y", "Z"}, head);
}

std::string wristArmText() {
  const std::string flange = "outil=-x,940,0,1455", centre = "outil=-x,855,0,1455";
  std::ifstream stream(KORVO_MACHINES "/arm-irb2400.def");
  std::string text(std::istreambuf_iterator<char>(stream), {});
  const std::size_t at = text.find(flange);
  if (at == std::string::npos) std::exit(2);
  return text.replace(at, flange.size(), centre);
}

}  // namespace korvo::bench

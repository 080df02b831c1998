#pragma once

#include <string>
#include <string_view>

/// Files that rows write for themselves.
namespace korvo::bench {

/// A file of its own in the temporary folder, removed with the object.
class Scratch {
 public:
  explicit Scratch(const char* ending);
  ~Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::string& path() const { return path_; }
  std::wstring wide() const { return {path_.begin(), path_.end()}; }
  void write(std::string_view bytes) const;
  double megabytes() const;

 private:
  std::string path_;
};

/// A five-axis machine of so many element lines (eight at least): bodies without a file ride on its
/// axes in turn. Version 2.
std::string bodiesText(int elements);

/// The definition of the arm irb2400 with its tool point in the wrist centre, which is where the
/// library's own solver aims. Version 1.
std::string wristArmText();

}  // namespace korvo::bench

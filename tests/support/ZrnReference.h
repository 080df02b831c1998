#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/InCLocale.h"
#include "tests/support/ZrnText.h"

/// A second reader of geometry files: the C library's own fgets and sscanf, recursion where the
/// format is recursive, everything as a text at once. Slow, hungry, without defence: what the
/// library's reader must agree with. Needs a file of a few thousand lines at most.
namespace korvo::test {

class ZrnReference {
 public:
  static ZrnAnswer read(const char* path) {
    const InCLocale scope;
    ZrnReference reader;
    reader.file_ = std::fopen(path, "rb");
    if (reader.file_ == nullptr) return reader.answer_;
    const int first = std::getc(reader.file_);
    std::rewind(reader.file_);
    if (first == EOF) {
      reader.answer_.code = -1;
      reader.answer_.scale = 1;
      reader.say("ZRN_LoadFile:: File is empty");
    } else {
      reader.load();
    }
    std::fclose(reader.file_);
    return reader.answer_;
  }

 private:
  struct Header {
    int fields = 0;
    long a = 0, b = 0, code = 0;
    double value = 0;
    std::string name;
    int kind = 0;
  };

  void say(const std::string& text) { answer_.messages.push_back(text); }
  bool line() { return std::fgets(line_, sizeof line_, file_) != nullptr; }
  bool threeIntegers() const {
    long a, b, c;
    return std::sscanf(line_, "%ld%ld%ld", &a, &b, &c) == 3;
  }

  bool header(Header& out) const {
    Header h;
    char token[256] = "";
    if (std::sscanf(line_, "%ld%ld%ld%lf%s", &h.a, &h.b, &h.code, &h.value, token) == 5) {
      h.fields = 5;
      if (token[0] != '\0') h.name = std::strstr(line_, token);
    } else if (h = Header(),
               std::sscanf(line_, "%ld%ld%ld%lf", &h.a, &h.b, &h.code, &h.value) == 4) {
      h.fields = 4;
    } else if (h = Header(), std::sscanf(line_, "%ld%ld%ld", &h.a, &h.b, &h.code) == 3) {
      h.fields = 3;
    } else {
      return false;
    }
    h.kind = kind(h.a, h.b, h.code);
    out = h;
    return true;
  }

  static int kind(long a, long b, long code) {
    if (code == 1 && a == 2) return 1;
    if (code == 22 && a != 0) return 1;
    if (code == 2 && b == 1) return 2;
    if (code == 4 && a >= 2 && b == 1) return 3;
    if (code == 4 && a >= 2 && b >= 2) return 4;
    if (code == 5 && a >= 2 && b == 0) return 5;
    if (code == 8 && a != 0 && b != 0) return 6;
    if (code == 9 && a >= 2 && b == 1) return 7;
    if (code == 9 && a >= 2 && b >= 2) return 8;
    if (code == 10 && a >= 2 && b >= 2) return 9;
    if (code == 14 && a == 1 && b == 1) return 10;
    if (code == 100 && a == 2 && b == 2) return 11;
    if (code == 210 && a == 2 && b == 2) return 12;
    if (code == 11) return 13;
    if (code == 17) return 14;
    if (code == 18) return 15;
    if (code == 20) return 16;
    if (code == 110) return 17;
    return 0;
  }
  static bool isIn(int kind, const std::vector<int>& kinds) {
    for (const int k : kinds) {
      if (k == kind) return true;
    }
    return false;
  }

  // --- data lines

  bool reals(int count, double* v) {
    static const char* const kFormats[] = {"", "%lf", "%lf %lf", "%lf %lf %lf", "%lf %lf %lf %lf"};
    return line() && std::sscanf(line_, kFormats[count], v, v + 1, v + 2, v + 3) == count;
  }
  bool integer(long& i) { return line() && std::sscanf(line_, "%ld", &i) == 1; }
  bool integers(long& i, long& j) { return line() && std::sscanf(line_, "%ld %ld", &i, &j) == 2; }

  bool rows(double count, int perLine, NumberText& out) {
    double v[4];
    for (double i = 0; i < count; ++i) {
      if (!reals(perLine, v)) return false;
      for (int k = 0; k < perLine; ++k) out << v[k];
    }
    return true;
  }
  bool list(NumberText& out) {
    long count = 0;
    return integer(count) && rows(static_cast<double>(count), 1, out);
  }

  bool nurbsCurve(const Header& h, NumberText& out) {
    long long planar = 0;
    for (long i = 0; i < h.a; ++i) {
      double x, y, z, w;
      if (!line()) return false;
      if (i == 0 && std::sscanf(line_, "%lf %lf %lf %lf", &x, &y, &z, &w) != 4) planar = 1;
      if (planar == 1) {
        z = 0;
        if (std::sscanf(line_, "%lf %lf %lf", &x, &y, &w) != 3) return false;
      } else if (std::sscanf(line_, "%lf %lf %lf %lf", &x, &y, &z, &w) != 4) {
        return false;
      }
      out << x << y << z << w;
    }
    long degree = 0, periodic = 0, ignored = 0;
    double interval[4], other[4];
    if (!integers(degree, ignored) || !integers(periodic, ignored)) return false;
    if (!reals(2, interval) || !reals(2, other)) return false;
    const long long periodicFlag = periodic == 1;
    out.bar() << planar << static_cast<long long>(degree) << periodicFlag << interval[0]
              << interval[1];
    out.bar();
    return list(out) && integer(ignored);
  }

  bool nurbsSurface(const Header& h, NumberText& out) {
    if (!rows(static_cast<double>(h.a) * static_cast<double>(h.b), 4, out)) return false;
    long u = 0, v = 0, flagU = 0, flagV = 0;
    if (!integers(u, v) || !integers(flagU, flagV)) return false;
    const long long rationalU = flagU == 1;
    const long long rationalV = flagV == 1;
    out.bar() << static_cast<long long>(u) << static_cast<long long>(v) << rationalU << rationalV;
    if (!rows(2, 2, out)) return false;
    out.bar();
    if (!list(out)) return false;
    out.bar();
    return list(out);
  }

  bool data(const Header& h, std::string& text) {
    NumberText out;
    bool fits = false;
    const auto a = static_cast<double>(h.a);
    switch (h.kind) {
      case 1:
        fits = rows(h.code == 1 ? static_cast<double>(h.b) : a, 3, out);
        break;
      case 2:
        fits = rows(a, 2, out);
        break;
      case 3:
        fits = rows(a, 3, out);
        break;
      case 4:
        fits = rows(a * static_cast<double>(h.b), 3, out);
        break;
      case 5:
        (out << 0.0 << 0.0).bar();
        fits = line() && rows(a, 3, out);
        break;
      case 6:
        fits = list(out);
        out.bar();
        fits = fits && list(out);
        break;
      case 7:
        fits = nurbsCurve(h, out);
        break;
      case 8:
        fits = nurbsSurface(h, out);
        break;
      case 9:
        fits = rows(1, 3, out);
        break;
      case 10:
        fits = rows(1, 2, out) && rows(1, 1, out) && rows(1, 3, out);
        out.bar();
        fits = fits && rows(3, 3, out);
        out.bar();
        fits = fits && rows(1, 3, out);
        break;
      case 11: {
        double v[4];
        fits = reals(1, v);
        factor_ = v[0];
        break;
      }
      default:
        break;
    }
    text = out.str();
    return fits;
  }

  // --- nodes

  static std::string head(const Header& h, const std::string& data) {
    std::string text = std::to_string(h.kind) + '[' + std::to_string(h.a) + ',' +
                       std::to_string(h.b) + ',' + std::to_string(h.code) + "](" + data + ')';
    if (h.value != 0) text += " v=" + textOf(h.value);
    if (!h.name.empty()) text += " n=" + escaped(h.name);
    return text;
  }

  bool attributes(std::string& out) {
    std::fpos_t place;
    std::fgetpos(file_, &place);
    if (!line()) return true;
    Header h;
    if (!header(h) || h.a != 2 || h.b != 2 || h.code != 210) {
      return std::fsetpos(file_, &place) == 0;
    }
    for (;;) {
      std::fgetpos(file_, &place);
      if (!line()) return true;
      if (threeIntegers()) return std::fsetpos(file_, &place) == 0;
      out += '{' + escaped(line_) + '}';
    }
  }

  bool children(const std::vector<int>& kinds, bool areCurves, std::string& out) {
    for (;;) {
      std::fpos_t place;
      std::fgetpos(file_, &place);
      if (!line()) return false;
      Header h;
      if (!header(h)) return std::feof(file_) != 0;
      if (!isIn(h.kind, kinds)) return std::fsetpos(file_, &place) == 0;
      std::string text;
      if (!data(h, text)) {
        static const char* const kNames[] = {"",         "Polyline",
                                             "Polyline", "Polynomial Curve",
                                             "",         "Trimmed Polynomial Curve",
                                             "",         "Nurbs Curve",
                                             "",         "",
                                             "Arc Curve"};
        say(areCurves ? std::string("GetTrimmingCurves:: could not read ") + kNames[h.kind]
                      : "GetPatchSurface:: could not read Patch");
        skip(true);
        return false;
      }
      out += '{' + head(h, text) + '}';
    }
  }

  bool fail(const std::string& what, bool withSubEntities) {
    say("GetNextEntity:: could not read " + what);
    skip(withSubEntities);
    return false;
  }

  bool next() {
    Header h;
    if (!line() || !header(h)) return false;
    static const char* const kNames[] = {"",
                                         "Polyline",
                                         "",
                                         "Polynomial Curve",
                                         "",
                                         "Trimmed Polynomial Curve",
                                         "Multipatch surface",
                                         "Nurbs Curve",
                                         "Nurbs surface",
                                         "Planar surface",
                                         "Arc Curve",
                                         "Scale"};
    std::string text, attributeLines, patches, trims, number;
    if (h.kind == 0) return true;
    if (isIn(h.kind, {1, 3, 5, 7, 10})) {
      if (!data(h, text)) return fail(kNames[h.kind], false);
      attributes(attributeLines);
    } else if (isIn(h.kind, {6, 8, 9})) {
      number = " #" + std::to_string(++surfaces_);
      if (!data(h, text)) return fail(kNames[h.kind], true);
      if (h.kind == 6) children({4}, false, patches);
      children({1, 2, 3, 5, 7, 10}, true, trims);
      attributes(attributeLines);
    } else if (h.kind == 11) {
      if (!data(h, text)) return fail(kNames[h.kind], false);
      answer_.scale = factor_;
      return true;
    } else {
      if (h.kind >= 13) ++surfaces_;
      skip(false);
      return false;
    }
    answer_.nodes.push_back(
        head(h, text) + number + (attributeLines.empty() ? "" : " @" + attributeLines) +
        (patches.empty() ? "" : " P" + patches) + (trims.empty() ? "" : " T" + trims));
    return true;
  }

  bool skip(bool withSubEntities) {
    std::fpos_t place;
    for (;;) {
      std::fgetpos(file_, &place);
      if (!line()) {
        if (std::feof(file_)) say("SkipToNextEntity::end of file\n");
        return false;
      }
      if (threeIntegers()) break;
    }
    std::fsetpos(file_, &place);
    if (!withSubEntities) return true;
    for (;;) {
      std::fgetpos(file_, &place);
      Header h;
      if (!line() || !header(h)) return true;
      if (!isIn(h.kind, {1, 2, 3, 4, 5, 7, 10, 12})) return std::fsetpos(file_, &place) == 0;
      if (!skip(true)) return std::feof(file_) != 0;
    }
  }

  void load() {
    answer_.code = 0;
    answer_.scale = 1;
    do {
      if (!next()) skip(true);
    } while (!std::feof(file_) && !std::ferror(file_));
    if (!std::feof(file_)) answer_.code = 1;
  }

  ZrnAnswer answer_;
  std::FILE* file_ = nullptr;
  char line_[256] = "";
  double factor_ = 1;
  long long surfaces_ = -1;
};

}  // namespace korvo::test

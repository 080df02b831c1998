#include "tests/faults/Readers.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <sstream>

#include "adapter/machineFromDefinition.h"
#include "geometry/GeometryFile.h"
#include "geometry/ZrnFile.h"
#include "geometry/ZrnTriangles.h"
#include "platform/zgeo/UTools.h"
#include "tests/adapter/External.h"
#include "tests/kinematics/KMachine_describe.h"
#include "tests/support/ZrnText.h"
#include "tests/zgeo/StlFiles.h"
#include "toolkit/Machine.h"
#include "toolkit/check/Check.h"
#include "toolkit/export/Bodies.h"
#include "toolkit/path/Apt.h"

namespace korvo::test {
namespace {

namespace fs = std::filesystem;
using zgeo::UTri;
using zkin::KMachine;
using zkin::KMachineElem;

// --- files

/// Every keyword of a definition file, a body found beside it and one that is not there.
const std::string kDefinition = R"(# Head B on the frame, table C under the part.
frame=z
axis=Y,+y
rotation=C,+z,0,0,0,0,0
part=x,y,0,0,0
lien=BATI
axis=X,+x,$ZRN_MACHINE_DEF/slide.stl,10,20,30
axis=Z,+z
rotation=B,+y,0,0,12.5,0,300,nowhere.stl
loop=X,1,2,3
tool=z,0,0,120,$ZRN_MACHINE_DEF/holder.stl
limits=X,-400,400
courseminimum=Z,-60
coursemaximum=Z,500
strategy=3
mode=1
rotationpoint=1,2,3,4,5,6
collisions=tool,BATI,PIECE,C
collisions=B,PIECE,C
)";

/// A small machine, since the check makes thousands of texts for a large one.
const std::string kSmall = "frame\naxis=X,x\npart\nlien=BATI\naxis=Z,z\ntool=z,0,0,5\n";

/// Of which the checker has something to say, and loads it all the same.
const std::string kDoubtful = "frame\naxis=X,x\npart\nlien=BATI\naxis=X,z\ntool=z,0,0,5\n";

/// With bodies.
const std::string kSmallWithBodies =
    "frame\naxis=X,x,$ZRN_MACHINE_DEF/slide.stl\npart\nlien=BATI\naxis=Z,z\n"
    "tool=z,0,0,5,$ZRN_MACHINE_DEF/holder.stl\n";

/// What a host had loaded before: another machine, of which nothing may come back.
const std::string kMill =
    "frame\naxis=X,x\naxis=Y,y\npart=x,y\nlien=BATI\naxis=Z,z\ntool=z,0,0,50\n";

/// What comes in the place of a definition file.
const std::string kOther =
    "frame\naxis=X,x\naxis=Y,y\nrotation=C,z,0,0,0,0,0\npart=x,y\nlien=BATI\naxis=Z,z\n"
    "tool=z,0,0,80\nlimits=X,-7,7\nstrategy=1\nmode=2\n";

UTri triangle(int i) {
  const double x = i;
  return {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0.5}};
}

std::string binaryStl(int count) {
  std::vector<UTri> triangles;
  for (int i = 0; i < count; ++i) triangles.push_back(triangle(i));
  return zgeo::test::binary(triangles, static_cast<std::uint32_t>(count));
}

std::string asciiStl(int count) {
  std::ostringstream text;
  text << "solid part\n";
  for (int i = 0; i < count; ++i) {
    text << "facet normal 0 0 1\nouter loop\nvertex " << i << " 0 0\nvertex " << i + 1
         << " 0 0\nvertex " << i << " 1 0.5\nendloop\nendfacet\n";
  }
  text << "endsolid part\n";
  return text.str();
}

/// Entities of every way to be read on: a surface with trims and attributes, patches, curves, a
/// scale, one that fails and is skipped.
const std::string kZrn =
    "2 2 10\n0 0 .5\n1 1 2\n.5 2\n2 2 210\ntext\n"
    "1 1 8\n1\n.5\n1\n1.5\n2 2 4\n.5 0 0\n.5 1 0\n.5 0 1\n.5 1 1\n"
    "2 1 9\n.5 0 0 1\n1.5 0 0 1\n1 0\n0 0\n0 1\n0 1\n2\n.5\n1.5\n0\n"
    "2 1 1\nx\n"
    "2 2 100\n2.5\n"
    "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n0 .5 0\n0 0 .5\n.5 0 0\n"
    "2 1 1\n.5 2 3\n";

const std::string kApt =
    "PARTNO PLATE\nUNITS/MM\n$$ a comment\nFEDRAT/500,MMPM\nN10 GOTO/1,2,3,0,0,1\n"
    "RAPID\nGOTO/10,20,$\n30\nSPINDL/1000\nCIRCLE/0,0,0\nGOTO/-1,0,0,0,1,0\nFINI\n";

/// `head`, then `part` until there are `size` bytes.
std::string filled(std::string head, const std::string& part, std::size_t size) {
  while (head.size() < size) head += part;
  return head;
}

// --- machines in words

void add(Content& all, const KMachine& machine) {
  all.push_back(describe(machine));
  for (const std::string& fact : facts(machine)) all.push_back(fact);
  all.push_back("axes " + std::to_string(machine.getAxisNum()));
  for (int tool = 1; tool <= machine.getToolNumber(); ++tool) {
    const KMachine::_sUKine& kine = machine.getKine(tool);
    all.push_back("class " + std::to_string(kine.kinematicClass));
    all.push_back(chainWords(machine.getToolChain(false, tool)));
  }
  for (int k = 1; k <= machine.getAxisNum(); ++k) {
    const KMachineElem* e = machine.getAxisElem(k);
    all.push_back("axis " + (e ? describe(*e) : std::string()));
  }
}

Content contentOf(const std::vector<UTri>& triangles) {
  Content all;
  for (const UTri& t : triangles)
    all.push_back(words(t.p[0]) + ", " + words(t.p[1]) + ", " + words(t.p[2]));
  return all;
}

// --- readers

class DefinitionReader : public Reader {
 public:
  explicit DefinitionReader(const fs::path& path) {
    const TempDir folder;
    machine_.setDataFilePNE(folder.write("mill.def", kMill).wstring(), 2);
    machine_.readDataFile();
    machine_.setDataFilePNE(path.wstring(), 2);
  }
  int read() override { return machine_.readDataFile(); }
  Content content() const override {
    Content all;
    add(all, machine_);
    return all;
  }

 private:
  KMachine machine_;
};

/// The same while a host listens, so that every line of the trace is made.
class TracedDefinitionReader : public DefinitionReader {
 public:
  using DefinitionReader::DefinitionReader;
  int read() override {
    struct Sink : zgeo::UTraceSink {
      void line(const std::wstring&, std::chrono::system_clock::time_point) override {}
    } sink;
    zgeo::UTraceSink* const before = zgeo::UTools::_setTraceSink(&sink);
    const int code = DefinitionReader::read();
    zgeo::UTools::_setTraceSink(before);
    return code;
  }
};

/// A machine at rest whose bodies are asked for; the file is that of one of them.
class BodiesReader : public Reader {
 public:
  explicit BodiesReader(const fs::path& path)
      : machine_((path.parent_path() / "machine.def").wstring().c_str(), 2) {
    machine_.readDataFile();
    value_.reset(machine_.newMachineValue());
  }
  int read() override {
    std::vector<UTri>().swap(triangles_);
    machine_.getTrianglesU(*value_, triangles_);
    return kDone;
  }
  Content content() const override { return contentOf(triangles_); }

 protected:
  struct Release {
    void operator()(zkin::KMachineValueBase* v) const { zkin::KMachineValueBase::_release(v); }
  };
  KMachine machine_;
  std::unique_ptr<zkin::KMachineValueBase, Release> value_;
  std::vector<UTri> triangles_;
};

/// The same asked for one by one.
class ToolkitBodiesOfReader : public BodiesReader {
 public:
  using BodiesReader::BodiesReader;
  int read() override try {
    std::vector<UTri>().swap(triangles_);
    for (const Body& body : bodiesOf(machine_, *value_))
      triangles_.insert(triangles_.end(), body.triangles.begin(), body.triangles.end());
    return kDone;
  } catch (const std::bad_alloc&) {
    triangles_.clear();
    return kNoMemory;
  }
};

class ExternalReader : public Reader {
 public:
  explicit ExternalReader(const fs::path& path) : path_(path.wstring()) {}
  int read() override try {
    adapter_.reset();
    KMachine machine(path_.c_str(), 2);
    if (machine.readDataFile() != 0) return -1;
    const auto made = zkin::machineFromDefinition(machine, zkin::Bodies::fromGeometryFiles);
    if (!made) return kNoMemory;
    adapter_ = std::make_unique<Adapter>(made.get());
    return kDone;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
  Content content() const override {
    if (!adapter_) return {};
    Content all(1);  // the entities are there together, bodies may be left out
    for (const Ombra::Kin::Entity* e : adapter_->machine()->GetKinematic().GetListEntity()) {
      const std::string name = narrow(e->GetEntityName());
      all[0] += name + " on " + std::to_string(e->GetEntityLink().carrier) + "; ";
      std::vector<UTri> body;
      zkin::NMachine::_ombraEntityGeom(e, body);
      for (const std::string& t : contentOf(body)) all.push_back(name + " has " + t);
    }
    return all;
  }

 private:
  const std::wstring path_;
  std::unique_ptr<Adapter> adapter_;
};

/// The machine of the definition beside a body's file.
class ExternalBodiesReader : public ExternalReader {
 public:
  explicit ExternalBodiesReader(const fs::path& body)
      : ExternalReader(body.parent_path() / "machine.def") {}
};

class GeometryFileReader : public Reader {
 public:
  explicit GeometryFileReader(const fs::path& path) : path_(path.wstring()) {}
  int read() override {
    std::vector<UTri>().swap(triangles_);
    zkin::loadGeometryFile(path_, triangles_);
    return kDone;
  }
  Content content() const override { return contentOf(triangles_); }

 private:
  const std::wstring path_;
  std::vector<UTri> triangles_;
};

class StlReader : public Reader {
 public:
  explicit StlReader(const fs::path& path) : path_(path.wstring()) {}
  int read() override { return UTri::_loadSTL(path_, triangles_); }
  Content content() const override { return contentOf(triangles_); }

 private:
  const std::wstring path_;
  std::vector<UTri> triangles_{UTri()};
};

class ZrnReader : public Reader {
 public:
  explicit ZrnReader(const fs::path& path) : path_(path.string()) {}
  int read() override {
    bool isToldOfMemory = false;
    nodes_.clear();
    const int code =
        zkin::ZRN_LoadFile(path_.c_str(), nodes_, scale_, nullptr, nullptr, [&](const char* text) {
          isToldOfMemory |= std::string_view(text).find("allocate") != std::string_view::npos;
        });
    return code == 0 && isToldOfMemory ? kNoMemory : code;
  }
  Content content() const override { return textsOf(nodes_); }

 private:
  const std::string path_;
  zkin::CGeomFileNodeList nodes_;
  double scale_ = 0;
};

/// No surface of the file is one that is meshed.
class ZrnTrianglesReader : public Reader {
 public:
  explicit ZrnTrianglesReader(const fs::path& path) : path_(path.string()) {}
  int read() override { return zkin::ZRN_FileToTriangles(path_.c_str(), 0.01, triangles_); }
  Content content() const override { return contentOf(triangles_); }

 private:
  const std::string path_;
  std::vector<UTri> triangles_{UTri()};
};

class ToolkitReader : public Reader {
 public:
  explicit ToolkitReader(const fs::path& path) : path_(path) {}
  int read() override try {
    loaded_.reset();
    loaded_.emplace(load(path_));
    return *loaded_ ? kDone : -1;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
  Content content() const override {
    Content all;
    if (!loaded_ || !*loaded_) return all;
    add(all, **loaded_->machine);
    for (const Diagnostic& d : loaded_->reasons) all.push_back(toString(d));
    return all;
  }

 private:
  const fs::path path_;
  std::optional<Loaded> loaded_;
};

/// The machine of a definition whose bodies the check looks into: they are no reason to refuse it.
class ToolkitBodiesReader : public ToolkitReader {
 public:
  explicit ToolkitBodiesReader(const fs::path& body)
      : ToolkitReader(body.parent_path() / "machine.def") {}
  Content content() const override { return machineOf(ToolkitReader::content()); }

 private:
  static Content machineOf(Content all) {
    std::erase_if(all, [](const std::string& s) { return s.find("machine.def:") != s.npos; });
    return all;
  }
};

class CheckReader : public Reader {
 public:
  explicit CheckReader(const fs::path& path) : path_(path) {}
  int read() override try {
    result_ = {};
    result_ = check();
    return hasError(result_.diagnostics) ? -1 : kDone;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
  Content content() const override {
    Content all;
    if (hasError(result_.diagnostics)) return all;
    for (const Diagnostic& d : result_.diagnostics) all.push_back(toString(d));
    return all;
  }

 protected:
  virtual CheckResult check() { return korvo::check(path_); }
  const fs::path path_;

 private:
  CheckResult result_;
};

class CheckTextReader : public CheckReader {
 public:
  explicit CheckTextReader(const fs::path& path) : CheckReader(path) {
    std::ifstream file(path, std::ios::binary);
    text_.assign(std::istreambuf_iterator<char>(file), {});
  }

 protected:
  CheckResult check() override { return checkText(text_, path_); }

 private:
  std::string text_;
};

class LineReader : public Reader {
 public:
  explicit LineReader(const fs::path&) {}
  int read() override { return e_.setFromLine(line_, 2) ? kDone : -1; }
  Content content() const override {
    if (e_.getElemType() == KMachineElem::KMET_TYPE_NONE) return {};
    return {describe(e_)};
  }

 private:
  const std::wstring line_ =
      L" rotation = AXE_B , +y, 0, 0, 12.5, 0, 300, a body with a long name.stl, 1, 2, 3 # note";
  KMachineElem e_;
};

class AptTextReader : public Reader {
 public:
  explicit AptTextReader(const fs::path&) {}
  int read() override try {
    targets_ = {};
    AptReader reader([this](const PathTarget& t, int line) { targets_.emplace_back(t, line); });
    for (std::size_t at = 0; at < kApt.size(); at = kApt.find('\n', at) + 1) {
      const std::string_view rest = std::string_view(kApt).substr(at);
      if (reader.line(rest.substr(0, rest.find('\n')))) return -1;
    }
    if (reader.end()) return -1;
    skipped_ = reader.skipped().size() + 10 * reader.notFollowed().size();
    return kDone;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
  Content content() const override {
    Content all;
    for (const auto& [t, line] : targets_) {
      std::ostringstream text;
      text << line << ": " << words(t.target.tip) << ", " << words(t.target.direction) << " at "
           << t.feed << ", " << skipped_;
      all.push_back(text.str());
    }
    return all;
  }

 private:
  std::vector<std::pair<PathTarget, int>> targets_;
  std::size_t skipped_ = 0;
};

template <class SomeReader>
std::unique_ptr<Reader> make(const fs::path& path) {
  return std::make_unique<SomeReader>(path);
}

void write(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace

fs::path writeFiles(const ReaderRow& row, const fs::path& folder) {
  write(folder / "machine.def", row.machine.empty() ? kDefinition : row.machine);
  write(folder / "slide.stl", asciiStl(2));
  write(folder / "holder.stl", binaryStl(3));
  write(folder / row.file, row.bytes);
  return folder / row.file;
}

std::vector<ReaderRow> readersOfFiles() {
  constexpr int kNo = Reader::kNoMemory;
  const ReaderRow definition = {.name = "Definition",
                                .file = "machine.def",
                                .bytes = kDefinition,
                                .otherBytes = kOther,
                                .make = make<DefinitionReader>,
                                .leftByRead = Left::asBefore,
                                .leftByMemory = Left::usable};
  ReaderRow traced = definition;
  traced.name = "DefinitionTraced";
  traced.make = make<TracedDefinitionReader>;
  const ReaderRow load = {.name = "ToolkitLoad",
                          .file = "machine.def",
                          .bytes = kSmall,
                          .otherBytes = kOther,
                          .make = make<ToolkitReader>,
                          .memoryFailures = {-1, kNo}};
  ReaderRow check = load;
  check.name = "ToolkitCheck";
  check.bytes = kDoubtful;
  check.make = make<CheckReader>;
  const ReaderRow external = {.name = "External",
                              .file = "machine.def",
                              .bytes = kDefinition,
                              .otherBytes = kOther,
                              .make = make<ExternalReader>,
                              .memoryFailures = {Reader::kDone, -1, kNo},
                              .leftByMemory = Left::some};
  const ReaderRow nodes = {.name = "ZrnNodes",
                           .file = "part.zrn",
                           .bytes = kZrn,
                           .otherBytes = "2 1 1\n7.5 8 9\n",
                           .make = make<ZrnReader>,
                           // Its first opening is the look whether the file is empty.
                           .readFailures = {-1, 1},
                           .leftByRead = Left::beginning,
                           .memoryFailures = {-1, 1, kNo},
                           .leftByMemory = Left::usable};
  ReaderRow triangles = nodes;
  triangles.name = "ZrnTriangles";
  triangles.make = make<ZrnTrianglesReader>;
  triangles.readFailures = triangles.memoryFailures = {-1};
  triangles.leftByRead = triangles.leftByMemory = Left::nothing;
  const ReaderRow binary = {.name = "StlBinary",
                            .file = "part.stl",
                            .bytes = binaryStl(20),
                            .otherBytes = asciiStl(5),
                            .make = make<StlReader>,
                            .readFailures = {UTri::STL_READ_ERROR},
                            .memoryFailures = {UTri::STL_NO_MEMORY},
                            .ofAnEmptyFile = UTri::STL_NO_STL};
  ReaderRow text = binary;
  text.name = "StlText";
  text.bytes = asciiStl(8);
  text.otherBytes = binaryStl(5);
  const ReaderRow bodies = {.name = "MachineBodies",
                            .file = "holder.stl",
                            .bytes = binaryStl(kBodyTriangles),
                            .otherBytes = asciiStl(5),
                            .make = make<BodiesReader>,
                            .refused = Reader::kDone,
                            .readFailures = {Reader::kDone},
                            .leftByRead = Left::others,
                            .memoryFailures = {Reader::kDone},
                            .leftByMemory = Left::some,
                            .ofAnEmptyFile = Reader::kDone};
  ReaderRow bodiesOf = bodies;
  bodiesOf.name = "ToolkitBodiesOf";
  bodiesOf.make = make<ToolkitBodiesOfReader>;
  bodiesOf.memoryFailures = {Reader::kDone, kNo};
  ReaderRow externalBodies = bodies;
  externalBodies.name = "ExternalBodies";
  externalBodies.make = make<ExternalBodiesReader>;
  externalBodies.memoryFailures = external.memoryFailures;
  ReaderRow geometry = bodies;
  geometry.name = "GeometryFile";
  geometry.make = make<GeometryFileReader>;
  geometry.leftByRead = geometry.leftByMemory = Left::nothing;
  return {definition, traced, check,          load,   external, nodes,   triangles,
          binary,     text,   externalBodies, bodies, bodiesOf, geometry};
}

std::vector<ReaderRow> readersOfFilesOnTheWay() {
  ReaderRow row = {.name = "ToolkitLoadOfABinaryBody",
                   .file = "holder.stl",
                   .bytes = binaryStl(3),
                   .make = make<ToolkitBodiesReader>,
                   .refused = Reader::kDone,
                   .readFailures = {Reader::kDone},
                   .leftByRead = Left::all,
                   .machine = kSmallWithBodies};
  ReaderRow text = row;
  text.name = "ToolkitLoadOfATextBody";
  text.file = "slide.stl";
  text.bytes = asciiStl(2);
  return {row, text};
}

std::vector<ReaderRow> readersOfCutFiles() {
  std::vector<ReaderRow> rows = readersOfFiles();
  for (ReaderRow& row : rows) {
    // Half a line of a rotation point would be read for ever.
    const std::size_t point = row.bytes.find("rotationpoint");
    if (point != std::string::npos) row.bytes.erase(point, row.bytes.find('\n', point) + 1 - point);
  }
  return rows;
}

std::vector<ReaderRow> readersOfLargeFiles() {
  constexpr std::size_t kSize = 600'000;  // two of the largest buffer, that of an STL text
  const std::string comment = "# " + std::string(98, 'c') + "\n";
  std::vector<ReaderRow> rows = readersOfFiles();
  std::erase_if(rows, [](const ReaderRow& row) { return row.file == "holder.stl"; });
  const std::size_t middle = kDefinition.find("limits");  // what is behind the comments counts, too
  for (ReaderRow& row : rows) {
    row.bytes = row.file == "machine.def" ? filled(kDefinition.substr(0, middle), comment, kSize) +
                                                kDefinition.substr(middle)
                : row.file == "part.zrn" ? filled("", kZrn, kSize / 3)
                : row.name == "StlText"  ? asciiStl(6'000)
                                         : binaryStl(12'000);
  }
  return rows;
}

std::vector<ReaderRow> readersOfTexts() {
  constexpr int kNo = Reader::kNoMemory;
  return {{.name = "ElementLine", .file = "none", .make = make<LineReader>},
          {.name = "ToolkitCheckText",
           .file = "machine.def",
           .bytes = kDoubtful,
           .make = make<CheckTextReader>,
           .memoryFailures = {-1, kNo}},
          {.name = "AptText",
           .file = "none",
           .make = make<AptTextReader>,
           .memoryFailures = {kNo},
           .leftByMemory = Left::usable}};
}

}  // namespace korvo::test

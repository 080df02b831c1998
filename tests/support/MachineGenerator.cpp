#include "tests/support/MachineGenerator.h"

#include <ostream>
#include <random>
#include <string_view>

#include "tests/support/InCLocale.h"
#include "tests/support/MemoryFile.h"

namespace korvo::test {
namespace {

using zkin::KMachine;

constexpr int kMostChoices = 400;  // a machine takes about 150, a position 12

/// What stands on each side of the frame, root first: "part side|head side". One letter an axis;
/// U and W are linear axes parallel to X and Z, 1 to 6 the joints of an arm.
struct Layout {
  Topology topology;
  std::string_view axes;
};

constexpr Layout kLayouts[] = {
    {Topology::mill, "|XYZ"},          {Topology::mill, "XY|Z"},
    {Topology::mill, "X|YZ"},          {Topology::fourAxis, "A|XYZ"},
    {Topology::fourAxis, "|XYZB"},     {Topology::fourAxis, "YC|XZ"},
    {Topology::tableTable, "AC|XYZ"},  {Topology::tableTable, "BC|XYZ"},
    {Topology::tableTable, "YBC|XZ"},  {Topology::headTable, "C|XYZB"},
    {Topology::headTable, "XA|YZB"},   {Topology::headHead, "|XYZCB"},
    {Topology::headHead, "|XYZCA"},    {Topology::headHead, "XY|ZCA"},
    {Topology::gantry, "|XUYZCA"},     {Topology::gantry, "|XYZWCB"},
    {Topology::gantry, "C|XYZBW"},     {Topology::guns, "|XYZC"},
    {Topology::guns, "C|XYZ"},         {Topology::arm, "|123456"},
    {Topology::armOnRail, "|X123456"},
};

constexpr std::string_view kLinear = "XYZUW";

/// The direction that a letter has on an upright machine: 0 for x, 1 for y, 2 for z.
int nominalDirection(char letter) {
  constexpr std::string_view letters = "XUA4YB235";
  const auto at = letters.find(letter);
  if (letter == '6' || at < 4) return 0;
  return at < letters.size() ? 1 : 2;
}

/// The number of an axis in version 1. On arms the joints come before the rail.
int axisNumber(char letter, bool isArm) {
  if (isArm) return letter == 'X' ? 7 : letter - '0';
  return static_cast<int>(std::string_view("XYZABCUW").find(letter)) + 1;
}

std::string number(double x) {
  const InCLocale scope;
  return std::to_string(x);
}

std::string numbers(double x, double y, double z) {
  return number(x) + "," + number(y) + "," + number(z);
}

std::string direction(Choices& choices, int nominal) {
  double v[3] = {0, 0, 0};
  v[nominal] = 1;
  switch (choices.below(16)) {
    case 15:  // within the angle that counts as parallel
      v[(nominal + 1) % 3] = 0.002;
      break;
    case 14:  // almost parallel, but not so that it counts
      v[(nominal + 1 + choices.below(2)) % 3] = 0.02;
      break;
    case 13:  // a nutating head
      v[(nominal + 1 + choices.below(2)) % 3] = choices.oneIn(2) ? -1 : 1;
      break;
    case 12:
      for (double& c : v) c = choices.below(3) - 1;
      if (v[0] == 0 && v[1] == 0 && v[2] == 0) v[nominal] = 1;
      break;
    case 11:  // tilted any way
      for (double& c : v) c += 0.125 * (choices.below(7) - 3);
      break;
    case 10:
      v[nominal] = -1;
      break;
    case 9:
      return std::string("-") + "xyz"[nominal];
    default:
      return std::string(1, "xyz"[nominal]);
  }
  return numbers(v[0], v[1], v[2]);
}

double coordinate(Choices& choices) {
  constexpr double values[] = {0, 0, 0, 100, -100, 1, -1, 350, 0.5, -62.25, 1200, 33.333};
  return choices.pick(values);
}

std::string point(Choices& choices) {
  const double x = coordinate(choices), y = coordinate(choices);
  return numbers(x, y, coordinate(choices));
}

/// Writes a definition line by line.
class Draft {
 public:
  Draft(Choices& choices, const Layout& layout, int version)
      : choices_(choices), layout_(layout), version_(version) {}

  std::string write();

 private:
  void line(const std::string& text) { text_ += text + "\n"; }
  std::string word(const char* french, const char* english) {
    return choices_.below(2) == 0 ? english : french;
  }
  bool isArm() const { return layout_.axes.find('1') != std::string_view::npos; }
  std::string nameOf(char letter) const;
  void axes(std::string_view letters);
  void axis(char letter);
  void limits(const std::string& name);
  void body();
  void part();
  void tools(char last);
  void tool(const std::string& keyword);
  void settings();

  Choices& choices_;
  const Layout layout_;
  const int version_;
  std::string text_;
};

std::string Draft::nameOf(char letter) const {
  return '1' <= letter && letter <= '6' ? std::string("J") + letter : std::string(1, letter);
}

void Draft::limits(const std::string& name) {
  const std::string low = number(-10.0 * choices_.below(40));
  switch (choices_.below(5)) {
    case 1:
      return line(word("limites", "limits") + "=" + name + "," + low + ",360.5");
    case 2:
      return line("courseminimum=" + name + "," + low);
    case 3:
      return line("coursemaximum=" + name + ",1234.5");
    default:
      return;
  }
}

void Draft::axis(char letter) {
  const std::string name = nameOf(letter);
  const bool linear = kLinear.find(letter) != std::string_view::npos;
  std::string text = linear ? word("axe", "translation") : "rotation";
  text += "=" + std::string(version_ == 2 && choices_.oneIn(2) ? "AXE_" : "") + name;
  if (version_ == 1) text += "," + std::to_string(axisNumber(letter, isArm()));
  text += "," + direction(choices_, nominalDirection(letter));
  if (!linear) text += ",0,0," + point(choices_);  // the two integers guard the point's own
  if (choices_.oneIn(6)) text += ",body" + name + ".stl,10,20,30";
  line(text);
  limits(name);
  if (choices_.oneIn(8)) line(word("boucle", "loop") + "=BATI," + point(choices_));
}

/// A body in the middle of a chain: what follows hangs on it.
void Draft::body() {
  if (choices_.oneIn(6)) line(word("geom", "geometry") + "=cover.stl");
}

void Draft::axes(std::string_view letters) {
  for (const char letter : letters) {
    axis(letter);
    body();
  }
}

void Draft::part() {
  constexpr const char* frames[] = {"x,y", "x,y", "y,-x", "x,-y", "1,1,0,-1,1,0"};
  line(word("piece", "part") + "=" + choices_.pick(frames) + ",0,0,0");
}

void Draft::tool(const std::string& keyword) {
  line(keyword + "=" + direction(choices_, 2) + "," + point(choices_));
}

void Draft::tools(char last) {
  const int guns = layout_.topology == Topology::guns ? 2 : 0;
  tool(word("outil", "tool"));
  for (int i = 0; i < guns; ++i) {
    if (!choices_.oneIn(4)) line("lien=" + nameOf(last));
    tool(word("canon", "gun"));
  }
  if (choices_.oneIn(4)) {  // without the link it hangs on the tool or gun before
    if (!choices_.oneIn(4)) line("lien=" + nameOf(last));
    tool("tool");
  }
}

void Draft::settings() {
  if (choices_.oneIn(4)) line(word("strategie", "strategy") + "=2");
  if (choices_.oneIn(4)) line("mode=1");
  if (choices_.oneIn(4)) line("collisions=BATI," + nameOf(layout_.axes.back()) + ",tool");
  if (choices_.oneIn(4)) line("rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12.5");
}

std::string Draft::write() {
  const std::string_view axesText = layout_.axes;
  const auto bar = axesText.find('|');
  line("# " + std::string(axesText) + ", version " + std::to_string(version_));
  line(word("bati", "frame") + (version_ == 2 ? "=0,0,1" : ""));
  axes(axesText.substr(0, bar));
  part();
  line("lien=BATI");
  axes(axesText.substr(bar + 1));
  tools(axesText.back());
  settings();
  return text_;
}

Layout layoutOf(Choices& choices, Topology topology) {
  std::vector<Layout> fitting;
  for (const Layout& layout : kLayouts) {
    if (layout.topology == topology) fitting.push_back(layout);
  }
  return fitting[static_cast<std::size_t>(choices.below(static_cast<int>(fitting.size())))];
}

bool fitsVersion2(const Layout& layout) {
  return layout.axes.find_first_not_of("|XYZABC") == std::string_view::npos;
}

rc::Gen<Choices> anyChoices(int count) {
  const auto number = rc::gen::resize(100, rc::gen::inRange<int>(0, 256));
  return rc::gen::map(rc::gen::container<std::vector<int>>(static_cast<std::size_t>(count), number),
                      [](const std::vector<int>& numbers) {
                        return Choices(std::vector<std::uint8_t>(numbers.begin(), numbers.end()));
                      });
}

}  // namespace

const char* nameOf(Topology topology) {
  constexpr const char* names[kTopologies] = {"Mill",      "FourAxis", "TableTable",
                                              "HeadTable", "HeadHead", "Gantry",
                                              "Guns",      "Arm",      "ArmOnRail"};
  return names[static_cast<int>(topology)];
}

Choices::Choices(unsigned seed) {
  std::mt19937 random(seed);  // its sequence is fixed by the standard, distributions are not
  for (int i = 0; i < kMostChoices; ++i) {
    numbers_.push_back(static_cast<std::uint8_t>(random() >> 24));
  }
}

int Choices::below(int n) {
  const int number = next_ < numbers_.size() ? numbers_[next_] : 0;
  ++next_;
  return number % n;
}

std::ostream& operator<<(std::ostream& out, const MachineText& machine) {
  return out << nameOf(machine.topology) << ", version " << machine.version << "\n" << machine.text;
}

MachineText machineText(Choices& choices) {
  return machineText(choices, static_cast<Topology>(choices.below(kTopologies)));
}

MachineText machineText(Choices& choices, Topology topology) {
  const Layout layout = layoutOf(choices, topology);
  const int version = choices.below(2) == 0 || !fitsVersion2(layout) ? 1 : 2;
  return {topology, version, Draft(choices, layout, version).write()};
}

std::unique_ptr<KMachine> loadMachine(const std::string& text, int version) {
  const MemoryFile file(text);  // a folder on a disk takes longer than everything else
  auto machine = std::make_unique<KMachine>();
  machine->setDataFilePNE(file.path(), version);
  if (machine->readDataFile() != 0) return nullptr;
  machine->setCurrentTool(1);
  return machine;
}

std::unique_ptr<KMachine> loadMachine(const MachineText& machine) {
  return loadMachine(machine.text, machine.version);
}

Position positionOf(const KMachine& machine, const std::vector<double>& values) {
  return Position(machine.axisValues(values));
}

std::vector<double> positionValues(Choices& choices, int count) {
  constexpr double values[] = {0,  0,   90,   -90,  180, -180, 45,   -30,   1,
                               -1, 360, 0.25, 1e-6, 20,  359,  -110, 37.25, 500.125};
  std::vector<double> out;
  for (int i = 0; i < count; ++i) out.push_back(choices.pick(values));
  return out;
}

rc::Gen<MachineText> anyMachine() {
  return rc::gen::map(anyChoices(kMostChoices),
                      [](Choices choices) { return machineText(choices); });
}

rc::Gen<MachineText> anyMachine(Topology topology) {
  return rc::gen::map(anyChoices(kMostChoices),
                      [topology](Choices choices) { return machineText(choices, topology); });
}

rc::Gen<std::vector<double>> anyPosition(const KMachine& machine) {
  const int count = machine.getAxisNum();
  return rc::gen::map(anyChoices(count),
                      [count](Choices choices) { return positionValues(choices, count); });
}

}  // namespace korvo::test

// The report of a path as text, what a person wants to know first.
#include <algorithm>
#include <cmath>
#include <ostream>

#include "toolkit/Text.h"
#include "tools/Checked.h"
#include "tools/Label.h"
#include "tools/path_report.h"
#include "tools/path_words.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kMostLines = 10;  // of each kind; what follows is counted

class Text {
 public:
  Text(std::ostream& out, const PathOutcome& path) : out_(out), path_(path), l_(path.language) {}

  void print() {
    line("Machine", "Machine", path_.session.file());
    line("Settings", "Réglages", path_.session.settingsText(l_));
    line("Targets", "Cibles", inputText(path_));
    if (!path_.input.notFollowed.empty()) {
      line("Not followed", "Non suivi", notFollowedText(path_.input, l_));
    }
    line("Fits", "Passe",
         (path_.report.isFitting() ? in(l_, "yes: ", "oui : ") : in(l_, "NO: ", "NON : ")) +
             verdictText(path_));
    places();
    advice();
    begin();
    axes();
    figures();
    written();
  }

 private:
  void line(const char* english, const char* french, const std::string& text) {
    out_ << label(l_, english, french, 16) << text << '\n';
  }

  void more(std::size_t count) {
    if (count <= kMostLines) return;
    out_ << "  " << in(l_, "and ", "et encore ") << count - kMostLines << in(l_, " more", "")
         << '\n';
  }

  void places() {
    const ToolpathReport& report = path_.report;
    for (std::size_t i = 0; i < report.breaks.size() && i < kMostLines; ++i) {
      out_ << "  " << breakText(path_, report.breaks[i]) << '\n';
    }
    more(report.breaks.size());
    const std::vector<UnreachedRun> runs = unreachedRuns(path_);
    for (std::size_t i = 0; i < runs.size() && i < kMostLines; ++i) {
      out_ << "  " << unreachedText(path_, runs[i]) << '\n';
    }
    more(runs.size());
    for (std::size_t i = 0; i < report.standing.size() && i < kMostLines; ++i) {
      out_ << "  " << standingText(path_, report.standing[i]) << '\n';
    }
    more(report.standing.size());
  }

  void advice() {
    if (path_.advice.empty() && !path_.isCutShort) return;
    out_ << in(l_, "What helps", "Ce qui aide") << '\n';
    for (const PathAdvice& one : path_.advice) out_ << "  " << adviceText(path_, one) << '\n';
    if (path_.isCutShort) out_ << "  " << cutShortText(path_) << '\n';
  }

  void begin() {
    if (!path_.report.first) return;
    line("Begins", "Commence", positionText(path_, path_.report.first->values));
  }

  // --- the table of axes

  using Row = std::vector<std::string>;

  void axes() {
    if (path_.report.positions == 0) return;
    std::vector<Row> rows{
        {in(l_, "Axes", "Axes"), in(l_, "travel", "course"), in(l_, "least", "minimum"),
         in(l_, "most", "maximum"), in(l_, "lower limit", "limite basse"),
         in(l_, "upper limit", "limite haute"), in(l_, "largest step", "plus grand pas"),
         in(l_, "to target", "vers la cible")}};
    for (const PathAxisView& axis : axisViews(path_)) rows.push_back(rowOf(axis));
    for (const Row& row : rows) print(row, rows);
  }

  static Row rowOf(const PathAxisView& axis) {
    const AxisTravel& travel = *axis.travel;
    const std::string unit = axis.isTurn ? "°" : " mm";
    const auto limit = [&unit](double value) {
      return std::isinf(value) ? "-" : neat(value) + unit;
    };
    const bool hasStep = travel.largestStep > 0;
    return {"  " + axis.name,
            neat(travel.travel) + unit,
            neat(travel.low) + unit,
            neat(travel.high) + unit,
            limit(axis.min),
            limit(axis.max),
            hasStep ? neat(travel.largestStep) + unit : "-",
            hasStep ? std::to_string(travel.largestStepTarget + 1) : "-"};
  }

  // The first column to the left, the others to the right.
  void print(const Row& row, const std::vector<Row>& rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      std::size_t width = i == 0 ? 6 : 0;
      for (const Row& other : rows) width = std::max(width, lettersOf(other[i]));
      const std::string blanks(width - lettersOf(row[i]), ' ');
      out_ << (i == 0 ? row[i] + blanks : "  " + blanks + row[i]);
    }
    out_ << '\n';
  }

  static std::size_t lettersOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
  }

  void figures() {
    const ToolpathReport& report = path_.report;
    const std::string nearest = nearestLimitText(path_);
    if (!nearest.empty()) line("Nearest limit", "Limite proche", nearest);
    if (report.positions > 0) line("Singular", "Singularité", singularText(path_));
    line("Positions", "Positions",
         std::to_string(report.positions) + in(l_, ", of which added ", ", dont ajoutées ") +
             std::to_string(report.added));
    line("Cost", "Coût", neat(report.cost));
    if (!path_.nearestFirst) return;
    line("Nearest-first", "Au plus proche", nearestFirstText());
  }

  std::string nearestFirstText() const {
    const ToolpathReport& other = *path_.nearestFirst;
    std::string text = fitText(fitOf(other), l_) + in(l_, "; cost ", " ; coût ") + neat(other.cost);
    for (const PathAxisView& axis : axisViews(path_)) {
      const AxisTravel& travel = other.axes[static_cast<std::size_t>(axis.place)];
      text += ", " + axis.name + " " + neat(travel.travel);
    }
    return text;
  }

  void written() {
    if (path_.asked.output) line("Written", "Écrit", shownText(*path_.asked.output));
    if (path_.asked.page) line("Report", "Rapport", shownText(*path_.asked.page));
  }

  std::ostream& out_;
  const PathOutcome& path_;
  Language l_;
};

}  // namespace

void printPath(std::ostream& out, const PathOutcome& path) { Text(out, path).print(); }

}  // namespace korvo::tools

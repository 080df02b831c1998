#include "tools/path_notes.h"

#include "tools/Checked.h"
#include "tools/Messages.h"
#include "tools/path_words.h"

namespace korvo::tools {
namespace {

constexpr double kRounding = 1e-9;  // mm or degrees

class Notes {
 public:
  Notes(const ToolpathOptions& options, const Session& session)
      : options_(options), session_(session), l_(options.language) {}

  void sayAll() const {
    const int axes = session_.machine().axisNames().size();
    for (int i = 0; i < axes; ++i) {
      const auto place = static_cast<std::size_t>(i);
      const Redundancy& rule = options_.solver.redundancy[place];
      if (rule.rule == Redundancy::Rule::value) sayOutside(i, rule.value, "--hold");
      if (options_.start) sayOutside(i, (*options_.start)[place], "--from");
      sayIdle(i, options_.axes[place]);
    }
  }

 private:
  const zkin::KMachineElem& axis(int place) const {
    return *session_.machine()->getAxisElem(place + 1);
  }

  void sayOutside(int place, double value, const std::string& option) const {
    const zkin::KMachineElem& e = axis(place);
    const bool isBelow = e.hasMin() && value < e.getMin() - kRounding;
    const bool isAbove = e.hasMax() && value > e.getMax() + kRounding;
    if (!isBelow && !isAbove) return;
    const std::string name = session_.machine().axisNames()[place];
    const std::string limit = isBelow ? in(l_, "at least ", "au moins ") + neat(e.getMin())
                                      : in(l_, "at most ", "au plus ") + neat(e.getMax());
    say("korvo: " + option + in(l_, " has " + name + " at ", " a " + name + " à ") + neat(value) +
        in(l_, ", outside its limits (", ", hors de ses limites (") + limit + ")");
  }

  void sayIdle(int place, const AxisWish& wish) const {
    const std::string name = session_.machine().axisNames()[place];
    if (wish.margin > 0 && !axis(place).hasMin() && !axis(place).hasMax()) {
      say(in(l_, "korvo: --margin of " + name + " has no effect: it has no limits",
             "korvo: --margin de " + name + " est sans effet : il n'a pas de limites"));
    }
    if (wish.margin == 0 && wish.marginCost != AxisWish().marginCost) {
      say(in(l_, "korvo: --margin-cost of " + name + " has no effect without --margin",
             "korvo: --margin-cost de " + name + " est sans effet sans --margin"));
    }
  }

  const ToolpathOptions& options_;
  const Session& session_;
  Language l_;
};

}  // namespace

void sayNotes(const ToolpathOptions& options, const Session& session) {
  Notes(options, session).sayAll();
}

void sayNotFollowed(const PathInput& input, Language language) {
  if (!input.notFollowed.empty()) say(input.name + ": " + notFollowedText(input, language));
}

}  // namespace korvo::tools

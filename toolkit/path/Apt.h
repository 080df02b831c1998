#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/path/Toolpath.h"

namespace korvo {

/// Why a statement cannot be read, and where.
struct AptProblem {
  int line = 0;    ///< Of the text, from 1.
  int column = 0;  ///< Bytes of that line, from 1.
  std::string text;
};

/// Reads toolpaths as CAM systems write them in plain APT and CL text, line by line.
///
/// A statement is a word, and behind a `/` what belongs to it; letters count in either case, blanks
/// between the parts do not. Behind `$$` stands a comment; a statement whose line has a single `$`
/// goes on in the next line, and what stands behind that `$` is passed over.
///
///   GOTO/x,y,z,i,j,k   a target: the tip (mm), and the direction from tip to spindle
///   GOTO/x,y,z         the same with the last direction; before the first one 0,0,1
///   FEDRAT/f           the feed of the targets behind it, with MMPM, MMPR, IPM, IPR, PERMIN or
///                      PERREV on either side of the number, which says its unit
///   RAPID              the next target has no feed but is reached in rapid: kRapid
///   UNITS/MM  UNITS/INCHES   what lengths and feeds without a unit of their own are in from here
///                      on; an inch is 25.4 mm
///
/// A number or a label may stand before a statement: `N20 GOTO/...`, `20 GOTO/...`, `L1) GOTO/...`,
/// `P1=GOTO/...`. Any other statement in which GOTO stands as a word is a problem, for it might be
/// a target; but for the text behind PARTNO, PPRINT, REMARK, INSERT and MSG.
///
/// All others are skipped and counted. Those that move the tool, or change where points are
/// (GODLTA, CIRCLE, TRANS and the like), are counted for themselves: with any of them the targets
/// are not the path that was meant.
class KORVO_TOOLKIT_API AptReader {
 public:
  /// Longest statement in bytes, its continuations together.
  static constexpr std::size_t kMaxStatement = 1 << 16;

  /// Called with every target and the line on which its GOTO begins.
  using Take = std::function<void(const PathTarget&, int line)>;

  explicit AptReader(Take take, Language language = Language::english);

  /// Takes the next line, without its end. What was wrong with it; then no more shall follow.
  std::optional<AptProblem> line(std::string_view text);

  /// Says that there are no more lines.
  std::optional<AptProblem> end();

  using Counts = std::map<std::string, std::size_t, std::less<>>;

  /// How many statements there were of each word that is not read and does no harm. Words above the
  /// first 100 are counted as "...".
  const Counts& skipped() const { return skipped_; }

  /// How many there were of each word that changes where the tool goes and is not read either.
  const Counts& notFollowed() const { return notFollowed_; }

 private:
  class Cursor;
  using Problem = std::optional<AptProblem>;

  /// A part of a statement, and where it stands.
  struct Piece {
    std::size_t begin = 0;
    int line = 0;
    int column = 0;
  };

  std::string in(const char* english, const char* french) const;
  AptProblem problemAt(std::size_t at, const std::string& text) const;
  Problem statement();
  Problem statementOf(const std::string& word, Cursor& cursor);
  Problem passOver(const std::string& word);
  Problem readGoto(Cursor& cursor);
  Problem readFeed(Cursor& cursor);
  std::optional<double> feedUnit(const std::string& word) const;
  Problem readUnits(Cursor& cursor);
  void skip(std::string word);
  void take(const double* numbers, std::size_t count);

  Take take_;
  Language language_;
  int number_ = 0;
  std::string text_;  ///< The statement as far as it has been read.
  std::vector<Piece> pieces_;
  zgeo::UVec3d direction_{0, 0, 1};
  double feed_ = 0.0;
  double unit_ = 1.0;  ///< mm
  bool isRapid_ = false;
  Counts skipped_, notFollowed_;
};

}  // namespace korvo

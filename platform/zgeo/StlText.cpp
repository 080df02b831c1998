#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>

#include "platform/text/Number.h"
#include "platform/text/PlainDecimal.h"
#include "platform/zgeo/Stl.h"
#include "platform/zgeo/StlLayout.h"

namespace zgeo::stl {
namespace {

constexpr std::size_t kBlockSize = 1 << 18;

constexpr std::string_view kMark = "\xEF\xBB\xBF";  ///< That a text is UTF-8.

/// Eight characters as one number, so that a word is compared at once.
using Eight = std::uint64_t;
static_assert(std::endian::native == std::endian::little, "the first character is the lowest byte");

constexpr Eight eightOf(char c) { return 0x0101010101010101 * static_cast<unsigned char>(c); }

/// A word of up to eight lower case letters.
class Keyword {
 public:
  constexpr Keyword(const char* word) {
    for (; word[length_] != 0; ++length_) letters_ |= Eight(word[length_]) << (8 * length_);
  }
  constexpr std::size_t length() const { return length_; }
  /// Whether `text` begins with it, in any case: bit 5 is what parts the cases of a letter.
  constexpr bool begins(Eight text) const {
    return ((text | eightOf(0x20)) << (64 - 8 * length_)) == letters_ << (64 - 8 * length_);
  }

 private:
  Eight letters_ = 0;
  std::size_t length_ = 0;
};

constexpr Keyword kSolid = "solid", kFacet = "facet", kNormal = "normal", kOuter = "outer",
                  kLoop = "loop", kVertex = "vertex", kEndLoop = "endloop", kEndFacet = "endfacet",
                  kEndSolid = "endsolid";

/// The words of a text, one after the other.
class Words {
 public:
  explicit Words(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {}

  /// Goes to the next word; false when there is none.
  bool find() {
    while (at_ != end_ && isSpace(*at_)) ++at_;
    return at_ != end_;
  }
  /// Takes the word when it is this one, in any case.
  bool take(const Keyword& word) {
    return word.begins(ahead()) && endsAfter(word.length()) && advance(word.length());
  }
  /// Takes the word when all of it is a number.
  bool take(double& value) {
    const char* const end = korvo::text::takePlainDecimal(at_, end_, value);
    if (end != nullptr && isSpace(*end)) {
      at_ = end;
      return true;
    }
    const korvo::text::Scan scan = korvo::text::scanDouble(std::string_view(at_, end_), value);
    return scan && endsAfter(scan.length) && advance(scan.length);
  }
  void skip() {
    while (at_ != end_ && !isSpace(*at_)) ++at_;
  }
  /// Takes a whole facet that is laid out as told.
  bool take(const Layout& layout, double (&x)[9]) {
    const char* const end = layout.take(at_, end_, x);
    if (end != nullptr) at_ = end;
    return end != nullptr;
  }
  const char* at() const { return at_; }
  bool isAtEnd() const { return at_ == end_; }

 private:
  /// The next eight characters; blanks behind the end.
  Eight ahead() const {
    Eight eight = eightOf(' ');
    if (end_ - at_ >= 8) {
      std::memcpy(&eight, at_, sizeof eight);
      return eight;
    }
    for (const char* c = end_; c != at_;) eight = eight << 8 | static_cast<unsigned char>(*--c);
    return eight;
  }
  bool endsAfter(std::size_t length) const {
    const auto left = static_cast<std::size_t>(end_ - at_);
    return left == length || (left > length && isSpace(at_[length]));
  }
  bool advance(std::size_t length) {
    at_ += length;
    return true;
  }

  const char* at_;
  const char* end_;
};

/// Collects the facets of a text that comes in pieces of whole words.
///
/// What does not go on as a facet must ends it, and nothing is kept of it: no later corner can take
/// the place of one that was not readable.
class Facets {
 public:
  explicit Facets(std::vector<UTri>& out) : out_(out) {}

  void read(std::string_view piece) {
    Words words(piece);
    textBegin_ = nullptr;  // it lies in the piece before
    for (const char* behindLast = words.at(); words.find(); behindLast = words.at()) {
      if (next_ == Next::facet && words.take(layout_, x_)) {
        close();
      } else if (!goOn(words, behindLast)) {
        lookOut(words, behindLast);
      }
    }
  }
  bool hasAny() const { return hasAny_; }

 private:
  /// What the next word of a facet must be. Between "facet" and "outer" all others may stand.
  enum class Next { facet, outer, loop, vertex, number, endLoop, endFacet };

  /// Takes the word that must come next inside a facet; gives the facet up when another one does.
  /// `behindLast` is the end of the word before.
  bool goOn(Words& words, const char* behindLast) {
    switch (next_) {
      case Next::facet:
      case Next::outer:
        return false;
      case Next::loop:
        return goOnTo(Next::vertex, words.take(kLoop));
      case Next::vertex:
        return takeVertex(words, behindLast);
      case Next::number:
        return takeNumber(words);
      case Next::endLoop:
        textBegin_ = behindLast;
        return goOnTo(Next::endFacet, words.take(kEndLoop));
      case Next::endFacet:
        break;
    }
    return takeEnd(words);
  }

  bool goOnTo(Next next, bool isTaken) {
    next_ = isTaken ? next : Next::facet;
    return isTaken;
  }
  bool takeVertex(Words& words, const char* behindLast) {
    if (count_ > 0) textBegin_ = behindLast;
    const bool isTaken = goOnTo(Next::number, words.take(kVertex));
    if (isTaken && !words.isAtEnd()) learn(kVertexTexts[count_ / 3], words.at() + 1);
    return isTaken;
  }
  bool takeNumber(Words& words) {
    const bool isTaken = words.take(x_[count_++]);
    if (!isTaken || count_ == 9) return goOnTo(Next::endLoop, isTaken);
    return goOnTo(count_ % 3 == 0 ? Next::vertex : Next::number, true);
  }
  bool takeEnd(Words& words) {
    const bool isTaken = goOnTo(Next::facet, words.take(kEndFacet));
    if (!isTaken) return false;
    learn(Layout::kClosing, words.at());
    close();
    return true;
  }

  /// Looks at a word outside of facets or before "outer": exporters write all kinds of normal there
  /// ("nan", "-1.#IND"), and none is used. A solid may be named "facet": only a word that goes on
  /// as a facet tells that there is one.
  void lookOut(Words& words, const char* behindLast) {
    const char* const begin = words.at();
    if (words.take(kFacet)) {
      next_ = Next::outer;
      textBegin_ = begin;
    } else if (next_ == Next::outer && words.take(kNormal)) {
      hasAny_ = true;
      learn(Layout::kOpening, words.at());
    } else if (next_ == Next::outer && words.take(kOuter)) {
      hasAny_ = true;
      count_ = 0;
      next_ = Next::loop;
      textBegin_ = behindLast;
    } else {
      if (words.take(kEndFacet) || words.take(kEndSolid)) next_ = Next::facet;
      words.skip();
    }
  }

  void learn(Layout::Text text, const char* end) {
    if (textBegin_ != nullptr) layout_.learn(text, textBegin_, end);
  }

  void close() {
    const bool isFinite = std::ranges::all_of(x_, [](double x) { return std::isfinite(x); });
    if (!isFinite) return;
    out_.emplace_back(UVec3d(x_[0], x_[1], x_[2]), UVec3d(x_[3], x_[4], x_[5]),
                      UVec3d(x_[6], x_[7], x_[8]));
  }

  static constexpr Layout::Text kVertexTexts[] = {Layout::kVertex1, Layout::kVertex2,
                                                  Layout::kVertex3};

  std::vector<UTri>& out_;
  Layout layout_;
  const char* textBegin_ = nullptr;  ///< Of the text between numbers; null when not in this piece.
  double x_[9] = {};
  int count_ = 0;  ///< How many of them the facet has.
  Next next_ = Next::facet;
  bool hasAny_ = false;
};

/// The bytes of a file, block by block.
class Blocks {
 public:
  explicit Blocks(std::FILE* file) : file_(file) {}

  /// Reads on behind the last `kept` bytes of the block before, and gives both.
  std::string_view next(std::size_t kept) {
    std::memmove(bytes_.get(), bytes_.get() + size_ - kept, kept);
    size_ = kept + std::fread(bytes_.get() + kept, 1, kBlockSize - kept, file_);
    isLast_ = size_ < kBlockSize;
    return {bytes_.get(), size_};
  }
  /// Marks the word that fills the block as none that means anything, and cuts it to that mark.
  void abridge() {
    bytes_[0] = '?';
    size_ = 1;
  }
  bool isLast() const { return isLast_; }

 private:
  std::FILE* file_;
  std::unique_ptr<char[]> bytes_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  std::size_t size_ = 0;
  bool isLast_ = false;
};

/// How many bytes at the end of a block belong to a word that may go on in the next one.
std::size_t lengthOfLastWord(std::string_view bytes) {
  const auto last = std::find_if(bytes.rbegin(), bytes.rend(), isSpace);
  return static_cast<std::size_t>(last - bytes.rbegin());
}

std::string_view withoutMark(std::string_view head) {
  if (head.starts_with(kMark)) head.remove_prefix(kMark.size());
  return head;
}

}  // namespace

bool isPlain(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= ' ' && byte < 0xFF) || isSpace(c);
  });
}

bool isText(std::string_view head) {
  // A binary file whose header says "solid facet" still has a count. One below 2^24 has a zero
  // byte, a count that was never filled in often has 0xFF, and text has neither.
  constexpr std::string_view kNoText("\0\xFF", 2);
  if (head.substr(0, kRecordsAt).find_first_of(kNoText, kHeaderSize) != head.npos) return false;
  Words words(withoutMark(head));
  if (!words.find() || !words.take(kSolid)) return false;
  while (words.find()) {
    if (words.take(kFacet) || words.take(kEndSolid)) return true;
    words.skip();
  }
  return false;
}

bool readText(std::FILE* file, std::uint64_t size, std::vector<UTri>& out, bool& hasFacet) {
  constexpr std::string_view kShortest =
      "facet outer loop vertex 0 0 0 vertex 0 0 0 vertex 0 0 0 endloop endfacet ";
  static_assert(kShortest.size() >= sizeof(UTri));
  // A list that grows while it is filled stands in memory twice. This one never does; what it does
  // not need of its room stays untouched, and the system gives no memory for it.
  out.reserve(size / kShortest.size() + 1);
  Facets facets(out);
  Blocks blocks(file);
  std::size_t kept = 0;
  do {
    const std::string_view bytes = blocks.next(kept);
    kept = blocks.isLast() ? 0 : lengthOfLastWord(bytes);
    if (kept == kBlockSize) {
      blocks.abridge();
      kept = 1;
    } else {
      facets.read(bytes.substr(0, bytes.size() - kept));
    }
  } while (!blocks.isLast());
  hasFacet = facets.hasAny();
  return std::ferror(file) == 0;
}

}  // namespace zgeo::stl

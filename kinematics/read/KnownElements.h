#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kinematics/KMachineElem.h"
#include "platform/os/Names.h"

namespace zkin {

/// The text as a C string has it.
inline std::wstring_view untilNul(std::wstring_view text) {
  return text.substr(0, text.find(L'\0'));
}

/// The ranks of the first element of each index and of each name, as C strings and ignoring case.
/// Neither changes once an element is read.
///
/// @cost  One hash look-up each, whatever was read before.
class KnownElements {
 public:
  void add(const KMachineElem& e, std::size_t rank) {
    ranksByIndex_.emplace(e.getElemIndex(), rank);
    if (!ofName(e.getElemName())) ranksByName_.emplace(key_, rank);
  }

  std::optional<std::size_t> ofIndex(int index) const {
    const auto found = ranksByIndex_.find(index);
    return found == ranksByIndex_.end() ? std::nullopt : std::optional(found->second);
  }

  std::optional<std::size_t> ofName(std::wstring_view name) {
    key_.assign(untilNul(name));
    for (wchar_t& c : key_) c = korvo::os::lowered(c);
    const auto found = ranksByName_.find(key_);
    return found == ranksByName_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::unordered_map<int, std::size_t> ranksByIndex_;
  std::unordered_map<std::wstring, std::size_t> ranksByName_;
  std::wstring key_;  // of the name looked up last
};

}  // namespace zkin

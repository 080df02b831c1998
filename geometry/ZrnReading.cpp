#include "geometry/ZrnReading.h"

// A load goes back to places in its file.
static_assert(sizeof(std::fpos_t) >= 8, "places beyond 2 GiB must fit");

namespace zkin::zrn {

bool Reading::isCancelled() const {
  unsigned char flag = 0;
  return callbacks_.cancel && callbacks_.cancel(&flag) != 0;
}

// Deliberate: a load stops by the flag, its steps by the result. Test:
// ZrnCallbacks.CancelByTheFlagAloneStopsAtTheNextEntity.
bool Reading::isFlaggedToStop() const {
  unsigned char flag = 0;
  if (callbacks_.cancel) callbacks_.cancel(&flag);
  return flag != 0;
}

void Reading::report(const char* text) const {
  if (callbacks_.message) callbacks_.message(text);
}

bool Reading::nextLine() {
  if (!line_.read(stream_)) return false;
  ++linesTaken_;
  return true;
}

bool Reading::remember(const char* error) {
  if (std::fgetpos(stream_, &place_) == 0) return true;
  report(error);
  return false;
}

bool Reading::giveBack(const char* error) {
  if (std::fsetpos(stream_, &place_) != 0) {
    report(error);
    return false;
  }
  --linesTaken_;
  return true;
}

}  // namespace zkin::zrn

#include <memory>
#include <new>
#include <utility>

#include "geometry/ZrnReading.h"
#include "platform/os/Files.h"

// From a path to the list of nodes.
namespace zkin {
namespace {

using zrn::Reading;

/// A system call for each few kilobytes would cost more than their lines.
constexpr std::size_t kBufferSize = 1 << 16;

constexpr int kDone = 0;
constexpr int kBroken = 1;
constexpr int kRefused = -1;

/// Whether a file gives no byte: it is empty, cannot be read, or is no regular file.
bool isEmpty(const char* path) {
  const korvo::os::File file = korvo::os::openRead(std::string(path));
  return !file || std::getc(file.get()) == EOF;
}

int refused(const ZRN_Callbacks& callbacks, const char* text) {
  if (callbacks.message) callbacks.message(text);
  return kRefused;
}

double factorOf(const CGeomFileEntity& entity) {
  return static_cast<const CGeomFilePrivateScaling*>(entity.GetGeom())->factor;
}

/// Surfaces and curves stay; a scaling leaves its factor; anything else is dropped.
void keep(std::unique_ptr<CGeomFileNode> node, CGeomFileNodeList& nodes, double& scale) {
  const ZRN_KIND kind = node->entity.GetKind();
  if (ZRN_IsSurface(kind) || ZRN_IsCurve(kind)) {
    nodes.push_back(std::move(node));
  } else if (kind == ZRN_KIND_SCALING) {
    scale = factorOf(node->entity);
  }
}

int readAll(Reading& in, CGeomFileNodeList& nodes, double& scale) {
  long long surfaceCounter = -1;
  bool positionError = false;
  for (;;) {
    if (in.isFlaggedToStop()) return kDone;
    const std::uint64_t taken = in.linesTaken();
    auto node = std::make_unique<CGeomFileNode>();
    if (zrn::readNextEntity(in, *node, surfaceCounter, positionError)) {
      keep(std::move(node), nodes, scale);
    } else {
      positionError |= zrn::skipToNextEntity(in, true) == zrn::Skip::positionError;
    }
    // A read that failed once may come to the end all the same, but something is lost on the way.
    if (in.hasStreamError()) return kBroken;
    if (in.isAtEnd()) break;
    // A caller that cancels by the result alone stands at the same header for ever.
    if (in.linesTaken() == taken) break;
  }
  return positionError ? kBroken : kDone;
}

}  // namespace

int ZRN_LoadFile(const char* path, CGeomFileNodeList& nodes, double& scale,
                 const ZRN_CancelCallback& cancel, const ZRN_ProgressCallback& progress,
                 const ZRN_MessageCallback& message) try {
  scale = 1.0;
  const ZRN_Callbacks callbacks{cancel, progress, message};
  if (path == nullptr || isEmpty(path)) return refused(callbacks, "ZRN_LoadFile:: File is empty");
  // Between the look and this, another program may have taken the file away.
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);  // outlives the file
  const korvo::os::File file = korvo::os::openRead(std::string(path));
  if (!file) return refused(callbacks, "ZRN_LoadFile:: Could not open file");
  std::setvbuf(file.get(), buffer.get(), _IOFBF, kBufferSize);
  // Deliberate: told once, and only to who listens to messages, too. Test:
  // ZrnCallbacks.ProgressIsToldOnceAndOnlyWithMessages.
  if (progress && message) progress(0, 100);
  Reading in(file.get(), callbacks);
  return readAll(in, nodes, scale);
} catch (const std::bad_alloc&) {
  return kBroken;
}

}  // namespace zkin

// The definition file.

#include <cstdio>
#include <new>
#include <utility>

#include "kinematics/KMachine.h"
#include "kinematics/read/DefinitionReader.h"
#include "platform/os/Files.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;

namespace zkin {

void KMachine::setDataFilePNE(const std::wstring& path, int version) {
  dataFilePNE_ = path;
  version_ = version;
}

void KMachine::setDataFilePNE(const std::string& path, int version) {
  setDataFilePNE(UTools::_toWS(path.c_str(), 0), version);
}

int KMachine::readDataFile() try {
  if (version_ == 0) return -1;
  const korvo::os::File file = korvo::os::openRead(dataFilePNE_);
  if (!file) return -1;
  // Deliberate: the axis number is that of the load before, pairs of loads before stay, and so do
  // strategy and mode that the file does not name: only elements and rotation points start anew.
  Definition read =
      readDefinition(file.get(), {version_, axisNum_, folderOf(dataFilePNE_), collCheck_});
  // Half a machine would look like a whole one.
  if (std::ferror(file.get()) != 0) return -1;
  axisElems_.clear();  // ranks of the elements replaced now
  elements_ = std::move(read.elements);
  rotationPoints_ = std::move(read.rotationPoints);
  if (read.strategy) strategy_ = *read.strategy;
  if (read.modeRTCP) modeRTCP_ = *read.modeRTCP;
  collCheck_ = std::move(read.collisions);
  const int result = finalise();
  // Deliberate: a second record per tool, after finalise made the first; guns are included here.
  for (int t = 1; t <= read.tools; ++t) addKine(t, initDHm(t));
  return result;
} catch (const std::bad_alloc&) {
  return -1;
}

}  // namespace zkin

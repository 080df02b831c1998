#pragma once

#include "tools/Failure.h"

namespace CLI {
class App;
}

namespace korvo::tools {

/// Each adds its verb to the command line. What the verb answers is stored in `exit`; it throws
/// Failure for what it cannot answer.
void addInfo(CLI::App& app, Exit& exit);
void addForward(CLI::App& app, Exit& exit);
void addInverse(CLI::App& app, Exit& exit);
void addPath(CLI::App& app, Exit& exit);
void addLimits(CLI::App& app, Exit& exit);
void addInterpolate(CLI::App& app, Exit& exit);
void addTranslate(CLI::App& app, Exit& exit);
void addMesh(CLI::App& app, Exit& exit);
void addGeometry(CLI::App& app, Exit& exit);
void addNew(CLI::App& app, Exit& exit);
void addCheck(CLI::App& app, Exit& exit);
void addLsp(CLI::App& app, Exit& exit);

}  // namespace korvo::tools

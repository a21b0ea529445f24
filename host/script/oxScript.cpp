#include "oxScript.h"

namespace {
// Scripts run on the GUI thread only, so a plain counter suffices.
int gRunning = 0;
} // namespace

bool oxScript::isRunning() { return gRunning > 0; }

oxScript::oxScriptRun::oxScriptRun() { ++gRunning; }

oxScript::oxScriptRun::~oxScriptRun() { --gRunning; }

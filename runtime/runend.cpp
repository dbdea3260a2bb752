// The end of a run: the embedding program's handler, or the end of the process.
#include "runtime/runend.hpp"

#include <cstdlib>

namespace {

RunEndHandler runEndHandler = nullptr;

}  // namespace

RunEndHandler setRunEndHandler(RunEndHandler handler) {
    RunEndHandler before = runEndHandler;
    runEndHandler = handler;
    return before;
}

void endRun() {
    if (runEndHandler != nullptr) runEndHandler();
    std::exit(0);
}

#include "components/ProgramState.h"

// Out of line, so that the engine is released where its type is complete.
ProgramState::ProgramState() = default;
ProgramState::~ProgramState()
{
    delete activityFilter.data();
}

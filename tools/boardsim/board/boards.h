#pragma once

// The boards that there are. A new one is a class with its options and a line
// in boards.cpp.

#include "boardbase.h"
#include "commandline.h"

#include <memory>

namespace Boardsim {

struct BoardKind
{
    const char *mode;
    const char *help;
    // Adds the options, processes the command line and makes the board.
    std::unique_ptr<BoardBase> (*make)(CommandLine &line);
};

const QVector<BoardKind> &boardKinds();

} // namespace Boardsim

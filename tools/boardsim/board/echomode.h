#pragma once

#include "boardmode.h"

namespace Boardsim {

// Returns what comes, byte for byte.
class EchoMode : public BoardMode
{
    Q_OBJECT

public:
    using BoardMode::BoardMode;

    void received(const QByteArray &bytes) override;
    void outputEmpty() override;
};

} // namespace Boardsim

#pragma once

#include "boardmode.h"

namespace Boardsim {

// Returns what it receives, byte for byte.
class EchoMode : public BoardMode
{
    Q_OBJECT

public:
    using Options = NoOptions;
    EchoMode(const Options &, VirtualPort &port)
        : BoardMode(port)
    {
    }

    void received(const QByteArray &bytes) override;
    void outputEmpty() override;
};

} // namespace Boardsim

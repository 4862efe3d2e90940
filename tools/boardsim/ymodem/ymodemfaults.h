#pragma once

// What goes wrong on purpose while a board receives by YModem: which fault,
// at which place of the session, how often.

#include <QString>
#include <QVector>

#include <optional>

namespace Boardsim {

// A point at which the board answers.
struct YmodemPlace
{
    enum Kind {
        Start, // it asks for block 0 of a new batch
        Block, // it has read block n of a file, counted on past 255; 0 is the header
        Eot,   // it has read an EOT
        End    // it has read the empty block 0
    };
    Kind kind = Start;
    qint64 block = 0;
};

class YmodemFaults
{
public:
    enum Kind {
        LoseAnswer,   // "lose": accepted, but not answered
        DoubleAck,    // "double": two ACK instead of one
        Nak,          // "nak": what came is refused
        Cancel,       // "can": the board gives up with CAN CAN
        CancelByText, // "a": it gives up with 'A', as a user at its console would
        Silence,      // "silence": deaf and mute, for the value in ms or indefinitely
        Noise,        // "noise": value (3) bytes before the answer that mean nothing
        WildNoise,    // "wild-noise": the same of any bytes
        LateRequest,  // "late-c": the 'C' behind an ACK comes value (500) ms later
        OnlyRequest   // "only-c": 'C' without the ACK before it
    };

    // Adds one, written "<kind>[=<value>][@<place>][*<times>]". A place is the
    // number of a block, "every<n>" for each n-th block when it first comes,
    // "start", "eot" or "end"; without one it is every answer. A fault at one
    // place happens once, the others always, unless times says otherwise.
    // False if it is not understood.
    bool add(const QString &text);

    // The value of the fault if it is to happen here now; counts as happened.
    std::optional<int> take(Kind kind, const YmodemPlace &place);

private:
    struct Fault
    {
        bool isDue(const YmodemPlace &at);

        Kind kind = LoseAnswer;
        int value = 0;
        bool anywhere = false;
        YmodemPlace place;
        qint64 everyBlocks = 0; // instead of the number in place
        qint64 lastBlock = -1;  // that was answered
        qint64 left = 1;
    };
    static bool readPlace(const QString &text, Fault *fault);

    QVector<Fault> m_faults;
};

} // namespace Boardsim

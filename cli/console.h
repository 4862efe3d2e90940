#pragma once

// Standard input, output and error as bytes. In console_posix.cpp and
// console_windows.cpp.

#include <QByteArray>
#include <QString>

namespace Console {

// A closed standard stream discards; a reader that is gone and a full disk are
// errors of writing, not the end of the process. Consoles of Windows get UTF-8
// until the process ends.
void prepare();

enum class Outcome {
    Written,
    Closed, // its reader has gone
    Ended,  // it accepts nothing, and the process is to end
    Failed,
};
// Writes at once, waiting for a reader that is slow. reason: of a failure, for
// the user.
Outcome write(const QByteArray &bytes, QString *reason);

// From then on, no longer than a moment is waited for the reader.
void setDeadline(int msFromNow);

// Waits for input. The number of bytes; 0 at its end or where there is none.
int read(char *bytes, int size);

// A message for the user, as a line of standard error.
void tell(const QString &message);
// Text on standard error as it stands.
void tellPart(const QString &text);
bool isErrorTerminal();

} // namespace Console

#pragma once

// What is asked of the system directly, because QTcpSocket has no function for it.

#include <QtGlobal>

namespace SocketSystem {

// Lets as many connections wait to be accepted as the system allows, where that
// can be changed while listening.
void lengthenListenQueue(qintptr listeningDescriptor);

// A connection whose other end has vanished is noticed within a minute, on Windows,
// which asks ten times, within two or so; later while bytes are unacknowledged.
void watchPeer(qintptr descriptor);

// Tells the peer that nothing more will be sent. What it sends is still received.
void endSending(qintptr descriptor);

// Bytes that were handed over and that the peer's system has not acknowledged; 0
// where the system does not tell.
qint64 unacknowledged(qintptr descriptor);

} // namespace SocketSystem

#pragma once

// How many connections may wait to be accepted.

#include <QtGlobal>

// To what the system allows at most, where it can be changed while listening.
void lengthenListenQueue(qintptr listeningDescriptor);

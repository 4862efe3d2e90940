#pragma once

#include <QtTest>

// For waits on what has to come sooner or later, however slow the machine.
#define WAIT_FOR(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 30000)
#define WAIT_EQUAL(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 30000)

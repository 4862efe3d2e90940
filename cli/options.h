#pragma once

// What a command line asks for.

#include "linematcher.h"
#include "port.h"
#include "textcodec.h"

#include <QStringList>

#include <optional>

struct Options
{
    enum class Command { Help, Version, Ports, Monitor, Send, Expect, Ymodem };

    Command command = Command::Help;
    Port port;
    bool keepsTrying = false;

    // Text: of the device's side; standard input and output are UTF-8.
    int codecIndex = TextCodec::Utf8;
    bool isCodecGiven = false;
    std::optional<QByteArray> lineEnd; // as given

    // What is shown.
    bool isJson = false;
    bool isHex = false;
    bool hasStamps = false;
    bool isQuiet = false;
    std::optional<LineMatcher::Pattern> pattern; // of the filter, or expected
    QString logFile;

    // What is sent.
    std::optional<QString> text;
    std::optional<QByteArray> bytes;
    QStringList files;
    QString checksum; // a name of FrameChecksum; empty for none

    std::optional<int> durationMs;
    int timeoutMs = 10 * 1000;
};

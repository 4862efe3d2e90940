#pragma once

// One command of a set: what is sent, what is awaited, and what comes then.

#include <QByteArray>
#include <QString>

struct Command
{
    enum LineEnd { NoLineEnd, CrLf, Lf, Cr };
    enum Otherwise { Stop, GoOn, Repeat }; // when no answer has come

    static constexpr int maxText = 32767; // characters
    static constexpr int maxName = 100;
    static constexpr int maxMs = 24 * 3600 * 1000;
    static constexpr int maxRepeats = 10000;

    QString name;
    QString text;
    QString note;
    bool isTicked = true; // part of the sequence
    bool isHex = false;
    LineEnd lineEnd = CrLf;
    int delayMs = 100; // behind it, or behind its answer
    QString answer;    // awaited; empty: none
    bool isExpression = false;
    int timeoutMs = 1000;
    Otherwise otherwise = Stop;
    int repeats = 3; // of Repeat, before it stops

    // What is sent; escapes count in text. Empty, with a reason for the user, where it is
    // no text of its kind.
    QByteArray bytes(int codecIndex, QString *fault) const;

    bool operator==(const Command &other) const;
};

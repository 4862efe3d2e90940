#pragma once

// What the user answers to dialogs. Links Korvex::shell_base.

#include "dialoganswers.h"

inline void chooseFiles(const QStringList &names)
{
    DialogAnswers::instance().fileNames = [names](auto...) { return names; };
}

// An empty name cancels.
inline void chooseFile(const QString &name)
{
    chooseFiles(name.isEmpty() ? QStringList() : QStringList(name));
}

// Answers every question, and keeps them, while it lives.
struct Questions
{
    explicit Questions(int first)
        : answer(first)
    {
        DialogAnswers::instance().message = [this](auto, const QString &text, auto) {
            asked.append(text);
            return answer;
        };
    }
    ~Questions() { DialogAnswers::instance().message = nullptr; }
    Questions(const Questions &) = delete;
    Questions &operator=(const Questions &) = delete;

    int answer;
    QStringList asked;
};

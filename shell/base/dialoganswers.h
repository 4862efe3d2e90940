#pragma once

// Answers given in the user's place, for tests and demonstrations: where a
// function is set, no dialog opens and its result is used. All are empty in
// the program itself. Every modal dialog of shell/base asks here first.

#include <QStringList>
#include <functional>

struct DialogAnswers
{
    enum class FileMode { Open, OpenMany, Save, Folder };

    // The result of a message box: 1 for "确定" or "保存", 2 for "不保存", 0 for
    // "取消".
    std::function<int(const QString &title, const QString &text, int type)> message;

    // The chosen paths, empty for "取消". The save dialog uses the first.
    std::function<QStringList(FileMode mode, const QString &caption, const QString &folder,
                              const QString &filter)>
        fileNames;

    // The chosen one of a save or open dialog's name filters; without it that shown first.
    std::function<QString(const QString &filters)> filter;

    // A name that is asked for, empty for "取消".
    std::function<QString(const QString &title)> name;

    static DialogAnswers &instance()
    {
        static DialogAnswers answers;
        return answers;
    }
};

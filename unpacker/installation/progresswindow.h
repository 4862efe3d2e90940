#pragma once

// A small window with the progress of the work, until this is destroyed. Runs in
// parallel with the work, which need not process events. On Windows it is a window of our
// own, elsewhere that of zenity; where there is no display or no zenity, nothing
// is shown. Texts are UTF-8.

#include <cstdint>
#include <string>

class ProgressWindow
{
public:
    explicit ProgressWindow(const std::string &text);
    ~ProgressWindow();
    ProgressWindow(const ProgressWindow &) = delete;
    ProgressWindow &operator=(const ProgressWindow &) = delete;

    void setText(const std::string &text);

private:
    std::intptr_t m_handle = 0; // of the window's thread; zenity's input
    std::intptr_t m_process = 0;
};

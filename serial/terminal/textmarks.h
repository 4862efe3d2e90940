#pragma once

// How the text of a receive display is drawn: joins what several sources say about
// a block, and corrects the colors so that text can be read on its ground. The only
// one that sets the marks of the layout.

#include "loglayout.h"

#include <QHash>

class QWidget;

class TextMarks
{
public:
    // From below to above: a source may set again what those before it have set.
    enum Source { BaseStyles, Rules, Matches, SourceCount };

    // Of one block: ranges in order that don't overlap.
    using Marks = LogLayout::Marks;
    using MarksOf = std::function<Marks(const QTextBlock &)>;

    // The ground is the color QPalette::Base of the display.
    TextMarks(LogLayout *layout, const QWidget *display);

    // What a source says; with {} it is silent. The caller repaints.
    void setSource(Source source, const MarksOf &marksOf);

    // Ranges above others, which keep what those above do not set.
    static Marks joined(const Marks &below, const Marks &above);

private:
    Marks marksOf(const QTextBlock &block) const;
    QColor corrected(const QColor &text, const QColor &ground) const;

    LogLayout *m_layout;
    const QWidget *m_display;
    MarksOf m_sources[SourceCount];
    mutable QHash<quint64, QColor> m_corrected; // by text and ground
};

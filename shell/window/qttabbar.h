#pragma once

// The tabs of the tools. Ctrl+Tab, Ctrl+Shift+Tab and Ctrl+1 to Ctrl+9 change
// the tool from anywhere in the window.

#include "iconfont.h"

#include <QTabBar>

class QtTabBar : public QTabBar
{
    Q_OBJECT

public:
    explicit QtTabBar(QWidget *parent = nullptr);

    void addTool(const QString &text, IconFont::Glyph glyph);

public slots:
    void showNext();
    void showPrevious();

signals:
    // The user changed to this tab, by mouse or keyboard.
    void clicked(int index, const QString &text);

protected:
    void changeEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override; // changes no tool

private:
    void drawIcons();

    QVector<IconFont::Glyph> m_glyphs;
};

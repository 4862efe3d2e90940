#pragma once

// The picture of an empty area: an icon and a short text that says what will
// appear and how to get it.

#include "iconfont.h"

#include <QWidget>

class QLabel;

class EmptyState : public QWidget
{
    Q_OBJECT

public:
    EmptyState(IconFont::Glyph glyph, const QString &text, QWidget *parent = nullptr);

    void setText(const QString &text);
    QString text() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void drawIcon();

    IconFont::Glyph m_glyph;
    QLabel *m_icon;
    QLabel *m_text;
};

#pragma once

// The bar below a receive display that says when the received text is clearly in
// another codec than the chosen one, once for each opening of the link and codec.
// Switches nothing itself.

#include "codecguess.h"

#include <QSet>
#include <QWidget>

class QLabel;

class CodecBar : public QWidget
{
    Q_OBJECT

public:
    explicit CodecBar(QWidget *parent = nullptr);

    // The link was opened.
    void begin();
    // Received bytes that are shown as text. Those with the same name follow each
    // other; without a name they are a stream of their own.
    void watch(const QByteArray &bytes, const QString &stream);
    // Another codec was chosen.
    void reload();

signals:
    void codecWanted(int codec);

private:
    CodecGuess m_guess;
    QString m_stream;
    QSet<int> m_told;
    int m_shown = 0; // the codec that the bar speaks of
    QLabel *m_text;
};

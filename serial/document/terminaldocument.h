#pragma once

// What a receive display holds: paragraphs of plain text in one monospaced
// face, of which the oldest go when there are more than the limits allow. Owns
// the text and its layout, and stores very long paragraphs as several blocks,
// which nothing that it hands out shows. Knows no widget and no bytes.
//
// Line ends are all "\n".

#include <QTextDocument>

class LogLayout;

class TerminalDocument : public QTextDocument
{
    Q_OBJECT

public:
    TerminalDocument(const QFont &font, QObject *parent);

    LogLayout *layout() const { return m_layout; }

    // Characters, and paragraphs, each block of a long one counted.
    void setLimits(int characters, int paragraphs);

    void append(const QString &text);
    void replace(const QString &text);
    // So many characters at an end give way to others.
    void replaceFront(int characters, const QString &text);
    void replaceEnd(int characters, const QString &text);
    // Drops the oldest paragraphs above the limits.
    void dropOldest();

    // The text between two positions of the document.
    QString textBetween(int start, int end) const;
    QString text() const { return textBetween(0, characterCount() - 1); }

private:
    struct Stored
    {
        QString text;      // each block ends with "\n"
        QVector<int> cuts; // number of the new blocks that continue a paragraph, counted from the first
    };

    static Stored storedForm(const QString &text, int inBlock);
    int blockToKeep() const;

    LogLayout *m_layout;
    int m_maxCharacters;
    int m_maxParagraphs;
};

#pragma once

// What a receive display holds: paragraphs of plain text in one monospaced
// face, of which the oldest go when there are more than the limits allow. Owns
// the text and its layout, and stores very long paragraphs as several blocks,
// which nothing that it hands out shows. Knows no widget and no bytes.
//
// Line ends are all "\n".

#include <QTextBlock>
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
    int maxCharacters() const { return m_maxCharacters; }
    int maxParagraphs() const { return m_maxParagraphs; }
    bool hasRoom(int characters, int paragraphs) const;

    void append(const QString &text);
    void prepend(const QString &lines); // each with its end
    void replace(const QString &text);
    // So many characters at an end give way to others.
    void replaceFront(int characters, const QString &text);
    void replaceEnd(int characters, const QString &text);
    // Removes characters at the end of the last paragraph.
    void removeEnd(int characters);
    // Drops the oldest paragraphs above the limits.
    void dropOldest();

    // Drops the newest paragraphs above the limits.
    void dropNewest();

    int paragraphs() const;
    int paragraphsBehind(const QTextBlock &block) const;
    // By their distance from the last one; the first block of each. Not valid
    // where there are fewer.
    QTextBlock fromEnd(int paragraphs) const;
    static int lengthOf(const QTextBlock &firstBlock);               // of its paragraph, without the end
    static int positionIn(const QTextBlock &firstBlock, int column); // of one of its characters

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
    void markCuts(const Stored &stored, int firstBlock);
    int blockToKeep() const;

    LogLayout *m_layout;
    int m_maxCharacters;
    int m_maxParagraphs;
    bool m_hasLong = false; // there may be paragraphs of several blocks
};

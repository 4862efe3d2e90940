#pragma once

// Bytes on the clipboard: exact for this program, text for others. The text is
// made on request: most copies never need it.

#include "hexcopytext.h"

#include <QByteArray>
#include <QMimeData>
#include <optional>

class HexClip : public QMimeData
{
    Q_OBJECT

public:
    enum class As { Hex, Text };
    HexClip(const QByteArray &bytes, As as, int codec);
    HexClip(const QByteArray &bytes, HexCopyText::Form form, const HexRuns &runs);

    // Text that leads back to the same bytes.
    bool isExactText() const;

    // What a copy in this program put there, this run's or another one's.
    static std::optional<QByteArray> exactBytes(const QMimeData *data);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;

protected:
    QVariant retrieveData(const QString &mimeType, QVariant::Type type) const override;

private:
    QString text() const;

    QByteArray m_bytes;
    As m_as = As::Hex;
    int m_codec = 0;
    std::optional<HexCopyText::Form> m_form; // in the place of the two
    HexRuns m_runs;
};

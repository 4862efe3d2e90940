#pragma once

// Bytes on the clipboard: exact for this program, text for others. The text is
// made on request: most copies never need it.

#include <QByteArray>
#include <QMimeData>
#include <optional>

class HexClip : public QMimeData
{
    Q_OBJECT

public:
    enum class As { Hex, Text };
    HexClip(const QByteArray &bytes, As as, int codec);

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
    As m_as;
    int m_codec;
};

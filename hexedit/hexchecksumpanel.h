#pragma once

// Checksums of the selection, or of all bytes where nothing is selected.

#include "formpanel.h"

class QHexEdit;
class QLabel;
class QLineEdit;

class HexChecksumPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexChecksumPanel(QHexEdit *edit, QWidget *parent = nullptr);

public slots:
    void compute();
    void forget(); // the bytes have changed

private:
    QLineEdit *addResult(const QString &name, const char *objectName);

    QHexEdit *m_edit;
    QLabel *m_range;
    QLineEdit *m_crc32;
    QLineEdit *m_crc16;
    QLineEdit *m_sum;
    QLineEdit *m_md5;
    QLineEdit *m_sha256;
};

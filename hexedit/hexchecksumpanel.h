#pragma once

// Checksums of the selection, or of all bytes where nothing is selected.

#include "formpanel.h"
#include "hexchecksum.h"
#include "slicedtask.h"

class HexCommand;
class QHexEdit;
class QLabel;
class QLineEdit;

class HexChecksumPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexChecksumPanel(QHexEdit *edit, QWidget *parent = nullptr);

private:
    struct Range
    {
        qint64 begin = 0;
        qint64 end = 0;
        qint64 at = 0;
        bool isAll = false;
        HexChecksum sums;
    };

    void compute();
    SlicedTask::Step addSlice(Range &range) const;
    void showSums(Range &range);
    void clear(); // the bytes have changed
    QLineEdit *addResult(const QString &name, const char *objectName);

    QHexEdit *m_edit;
    HexCommand *m_compute;
    QLabel *m_range;
    QLineEdit *m_crc32;
    QLineEdit *m_crc16;
    QLineEdit *m_sum;
    QLineEdit *m_md5;
    QLineEdit *m_sha256;
};

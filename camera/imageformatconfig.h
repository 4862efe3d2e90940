#pragma once

// The camera page's panel of a device: its image format, as told by the board
// or set here, and its registers, one at a time or as tables. Sends nothing
// itself: asks for each request by a signal and is told the answers.

#include "camera/frameshow.h"
#include "shell/base/formpanel.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class ImageFormatConfig : public QWidget
{
    Q_OBJECT

public:
    explicit ImageFormatConfig(QWidget *parent = nullptr);
    ~ImageFormatConfig() override;

    int device() const; // 0 or 1, which requests go to
    const ImageRecord &record(int device) const { return m_records.at(device == 1 ? 1 : 0); }
    void setRecord(int device, const ImageRecord &record); // as the board told it

    int addressLength() const;
    int valueLength() const;
    void loadDefaults();

    // A read reply: the address's low 16 bits, the status, and the value of a
    // good one.
    void takeReply(quint16 address, quint8 status, quint32 value, int valueLength);
    // Nothing can be sent any more.
    void stopBatch();

signals:
    // An empty value reads.
    void signalReadWriteRegister(QString strAddr, QString strValue, int regId);
    void signalNotify(QString text, int kind);

private:
    FormGroup *buildFormat();
    FormGroup *buildRegister();
    void connectParts();
    void showRecord();
    void takeRecord();
    bool checkHex(QLineEdit *field, int length);
    void request(bool write);

    std::array<ImageRecord, 2> m_records;
    QComboBox *m_device;
    QComboBox *m_format;
    QSpinBox *m_width;
    QSpinBox *m_height;
    QSpinBox *m_addressLength;
    QSpinBox *m_valueLength;
    QSpinBox *m_regId;
    QLineEdit *m_address;
    QLineEdit *m_value;
    QPushButton *m_read;
    QPushButton *m_write;
};

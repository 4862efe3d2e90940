#pragma once

// The camera page's panel of a device: its image format, as told by the board
// or set here, and its registers, one at a time or as tables. Sends nothing
// itself: asks for each request by a signal and is told the answers.

#include "formpanel.h"
#include "frameshow.h"
#include "notice.h"
#include "registerbatch.h"

class DataManagerWidget;
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

    FormGroup *formatGroup() const { return m_formatGroup; } // which the page adds to
    int device() const;                                      // 0 or 1, which requests go to
    const ImageRecord &record(int device) const { return m_records.at(device == 1 ? 1 : 0); }
    void setRecord(int device, const ImageRecord &record); // as the board told it

    int addressLength() const;
    int valueLength() const;
    void loadDefaults();

    // A read reply: the device, the address's low 16 bits, the status, and the value
    // of a good one. What another device than the asked one says is ignored.
    void takeReply(int device, quint16 address, quint8 status, quint32 value, int valueLength);
    // Nothing can be sent any more, or something can't.
    void stopRequests();
    // Offers to save the rows of the tables. False: the user wants to stay.
    bool mayClose();

public slots:
    // Open the register table.
    void openReadTable();
    void openWriteTable();

signals:
    // An empty value reads.
    void signalReadWriteRegister(QString strAddr, QString strValue, int regId);
    void notify(const Notice &notice);

private:
    FormGroup *m_formatGroup = nullptr;
    FormGroup *buildFormat();
    FormGroup *buildRegister();
    void connectParts();
    void showRecord();
    void takeRecord();
    bool checkHex(QLineEdit *field, int length);
    void request(bool write);
    void reportUnanswered();
    bool fits(quint32 number, int length) const;

    // Register tables, one for reading and one for writing.
    struct Table
    {
        DataManagerWidget *widget = nullptr;         // made when first opened
        QHash<int, RegisterBatch::Outcome> outcomes; // by row, of the last run
    };
    void openTable(int mode);
    void startBatch(int mode);
    void endRow(int row, RegisterBatch::Outcome outcome);
    void showOutcome(const Table &table, int row) const;
    void refreshPage(int mode, int page);
    void showProgress(bool finished);
    void giveToRows(quint16 address, const QString &value);

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
    QPushButton *m_readTable;
    QPushButton *m_writeTable;
    std::array<Table, 2> m_tables;
    int m_running = 0; // whose rows the batch has
    RegisterBatch *m_batch;
    int m_batchDevice = 0;
    int m_notSent = 0; // rows that do not fit the lengths

    // What the panel's read button has asked for and is not answered yet.
    struct Request
    {
        int device = 0;
        quint32 address = 0;
    };
    std::optional<Request> m_asked;
    QTimer m_replyTimer;
};

#pragma once

// The camera page's panel of a device: its image format, as the board announced
// it or as it is set here, and its registers, one at a time or as tables. Edits
// and shows; the requests are RegisterSession's, and the page sends them.

#include "formpanel.h"
#include "notice.h"
#include "pixelformat.h"
#include "registersession.h"
#include "setting.h"

class DataManagerWidget;
class FieldMemory;
class QAction;
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
    void setRecord(int device, const ImageRecord &record); // as the board announced it

    int addressLength() const;
    int valueLength() const;
    void remember(FieldMemory *memory); // the fields of a register
    void loadDefaults();

    // A read reply: the low 16 bits of the address, and the value where the status
    // is 0. One of another device than the asked one is ignored.
    bool addReply(const QString &sender, int device, quint16 address, quint8 status, quint32 value,
                  int valueLength); // false: ignored
    // Nothing can be sent any more, or a request could not be.
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
    void recordEdited(int device); // by the user
    void notify(const Notice &notice);

private:
    FormGroup *buildFormat();
    FormGroup *buildRegister();
    void addReadBackAction();
    void connectParts();
    void connectSession();
    void storeLength(QSpinBox *field, Setting<int> *setting);
    void showRecord();
    void storeRecord();
    void setTarget();
    bool checkHex(QLineEdit *field, int length);
    void readRegister();
    void writeRegister();
    void clearValue();
    void showReadBack(quint32 address, quint32 written, const RegisterSession::Reply &reply);
    void openTable(RegisterSession::Access access);
    void startTable(RegisterSession::Access access, RegisterSession::Task task = RegisterSession::Transfer,
                    const std::optional<QVector<int>> &rows = std::nullopt);
    void copyReadTable();
    void saveReport(RegisterSession::Access access);
    void showProgress(RegisterSession::Access access);

    FormGroup *m_formatGroup = nullptr;
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
    QAction *m_readsBack = nullptr;
    RegisterSession m_session;
    std::array<DataManagerWidget *, 2> m_tables{}; // made when first opened
};

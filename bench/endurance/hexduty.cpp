#include "duty.h"
#include "hexeditwidget.h"
#include "mainwindow.h"
#include "payload.h"
#include "qhexedit.h"

#include <QFile>

namespace {

constexpr int kMegabyte = 1 << 20;
constexpr int kSize = 100 * kMegabyte;

QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Edits the file in the page, and at the end the same bytes without it.
class HexDuty : public Duty
{
public:
    HexDuty(MainWindow &window, const QString &folder)
        : m_page(window.findChild<HexEditWidget *>())
        , m_edit(window.findChild<QHexEdit *>())
        , m_name(folder + QStringLiteral("/image.bin"))
    {
    }

    void prepare() override
    {
        Boardsim::Payload payload(Boardsim::Encoding::Binary, 9);
        QFile file(m_name);
        bool written = file.open(QIODevice::WriteOnly);
        for (int at = 0; written && at < kSize; at += kMegabyte)
            written = file.write(payload.take(kMegabyte)) == kMegabyte;
        if (!written)
            qFatal("cannot write the file to edit");
    }

    void begin() override { m_page->openFile(m_name); }

    void tick(int second) override
    {
        if (m_page->fileName().isEmpty())
            return;
        if (second % 60 == 55) {
            save();
            return;
        }
        // Something new over 16 bytes in one place of the file, put back, and redone.
        const qint64 address = qint64(Boardsim::scrambled(3, quint32(second))) % (kSize - 16);
        const QByteArray bytes(16, char(second));
        m_edit->select(address, bytes.size());
        m_edit->replaceSelection(bytes);
        m_page->sltToolBtnsClicked(HexEditWidget::Undo);
        m_page->sltToolBtnsClicked(HexEditWidget::Redo);
        m_edits.append({address, bytes});
    }

    void stop() override { save(); }

    QString result() override
    {
        QByteArray expected = Boardsim::Payload(Boardsim::Encoding::Binary, 9).take(kSize);
        for (const auto &[address, bytes] : qAsConst(m_edits))
            expected.replace(int(address), bytes.size(), bytes);
        const bool right = contentOf(m_name) == expected;
        return compare(QStringLiteral("saves of the 100 MB file"), m_completeSaves, m_saves) +
               compare(QStringLiteral("files with every edit in them"), right, 1);
    }

private:
    void save()
    {
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        m_edit->task()->runToEnd();
        ++m_saves;
        m_completeSaves += !m_edit->isModified();
    }

    HexEditWidget *m_page;
    QHexEdit *m_edit;
    QString m_name;
    QVector<QPair<qint64, QByteArray>> m_edits;
    qint64 m_saves = 0;
    qint64 m_completeSaves = 0;
};

} // namespace

std::unique_ptr<Duty> makeHexDuty(MainWindow &window, const QString &folder)
{
    return std::make_unique<HexDuty>(window, folder);
}

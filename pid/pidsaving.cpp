#include "pidsaving.h"

#include "pidchart.h"
#include "pidexporter.h"
#include "pidrecorder.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"

#include <QDir>

PidSaving::PidSaving(const PidRecorder *recorder, const PidChart *chart, QWidget *page)
    : QObject(page)
    , m_recorder(recorder)
    , m_chart(chart)
    , m_page(page)
    , m_exporter(new PidExporter(this))
{
    connect(m_exporter, &PidExporter::finished, this, [this](const QString &fileName, const QString &error) {
        m_failed = !error.isEmpty();
        report(QStringLiteral("文件已导出："), fileName, error);
    });
}

void PidSaving::exportTables()
{
    if (m_exporter->isRunning()) {
        emit notify(Notice::error(QStringLiteral("上一次导出尚未完成，请稍候！")));
        return;
    }
    const QString fileName =
        QtFileDialog::getSaveFileName(m_page, QStringLiteral("导出数据"), QString(), QStringLiteral("*.csv"));
    if (!fileName.isEmpty())
        m_exporter->start(fileName, m_recorder->shown());
}

void PidSaving::savePicture()
{
    const QString fileName = QtFileDialog::getSaveFileName(m_page, QStringLiteral("保存图片"), QString(),
                                                           QStringLiteral("PNG图片(*.png);;PDF文档(*.pdf)"));
    if (fileName.isEmpty())
        return;
    QString error;
    if (!m_chart->savePicture(fileName, &error) && error.isEmpty())
        error = QStringLiteral("未知错误");
    report(QStringLiteral("图片已保存："), fileName, error);
}

bool PidSaving::complete()
{
    m_failed = false;
    m_exporter->complete();
    return !m_failed;
}

void PidSaving::report(const QString &success, const QString &fileName, const QString &error)
{
    const QString place = QDir::toNativeSeparators(fileName);
    if (error.isEmpty()) {
        emit notify(Notice::information(success + place));
        return;
    }
    emit notify(Notice::error(QStringLiteral("%1 保存失败：%2").arg(place, error)));
    QtMessageBox::warning(m_page, QStringLiteral("告警"), QStringLiteral("文件保存失败!"));
}

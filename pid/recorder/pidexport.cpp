#include "pidexport.h"

#include <QTextCodec>

namespace {

QByteArray encoded(const QString &text)
{
    return QTextCodec::codecForName("GB18030")->fromUnicode(text);
}

// Six significant digits, as a text stream prints it. Nearly all values are short
// integers.
void appendNumber(QByteArray &text, double value)
{
    constexpr double sixDigits = 1e6;
    if (value > -sixDigits && value < sixDigits && value == static_cast<int>(value))
        text += QByteArray::number(static_cast<int>(value));
    else
        text += QByteArray::number(value, 'g', 6);
}

} // namespace

PidExport::PidExport(const PidRecorder::Channels &channels)
    : m_channels(channels)
    , m_text(encoded(QStringLiteral("PID调试数据\n")))
{
    beginChannel();
}

void PidExport::beginChannel()
{
    m_row = 0;
    if (m_channel < m_channels.size())
        m_text += encoded(QStringLiteral("通道 %1 数据如下：\n序号,实际值,目标值,差值\n").arg(m_channel + 1));
}

bool PidExport::advance(int maxRows)
{
    for (; m_channel < m_channels.size(); beginChannel()) {
        const PidSamples &samples = m_channels[m_channel];
        for (; m_row < samples.size(); ++m_row) {
            if (maxRows-- <= 0)
                return false;
            const double actual = samples.at(m_row).actual;
            const double target = samples.at(m_row).target;
            m_text += QByteArray::number(m_row + 1);
            for (const double value : {actual, target, actual - target}) {
                m_text += ',';
                appendNumber(m_text, value);
            }
            m_text += '\n';
        }
        m_text += "\n\n";
        ++m_channel;
    }
    return true;
}

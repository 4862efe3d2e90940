#include "pid/pidexport.h"

#include <QTextStream>

namespace PidExport {

bool write(QIODevice *device, const QVector<Channel> &channels)
{
    QTextStream stream(device);
    stream.setCodec("GB18030");
    stream << QStringLiteral("PID调试数据\n");
    int number = 0;
    for (const Channel &channel : channels) {
        stream << QStringLiteral("通道 %1 数据如下：\n").arg(++number)
               << QStringLiteral("序号,实际值,目标值,差值\n");
        for (int k = 0; k < channel.points; ++k) {
            const double actual = channel.actual(k);
            const double target = channel.target(k);
            stream << k + 1 << ',' << actual << ',' << target << ',' << actual - target << '\n';
        }
        stream << "\n\n";
    }
    stream.flush();
    return stream.status() == QTextStream::Ok;
}

} // namespace PidExport

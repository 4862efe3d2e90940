#include "loglines.h"

#include "payload.h"

namespace Boardsim {

QString logLine(quint32 number, qint64 timeMs, quint32 seed)
{
    const quint32 value = scrambled(seed, number);
    // A quantity around a middle value, in thousandths.
    const auto around = [value](double middle, double spread) {
        return middle + spread * (double((value >> 8) % 2001) / 1000.0 - 1.0);
    };

    QString text;
    switch (value % 10) {
    case 0:
        text = QStringLiteral("I/adc: 通道 %1 电压 %2 V").arg(value % 4).arg(around(3.3, 0.05), 0, 'f', 3);
        break;
    case 1:
        text = QStringLiteral("I/temp: 电机温度 %1 ℃").arg(around(46, 4), 0, 'f', 1);
        break;
    case 2:
        text = QStringLiteral("I/motor: 设定转速 1500 rpm, 实际转速 %1 rpm").arg(around(1500, 20), 0, 'f', 0);
        break;
    case 3:
        text = QStringLiteral("D/pid: kp=1.20 ki=0.05 kd=0.01 误差=%1").arg(around(0, 9), 0, 'f', 2);
        break;
    case 4:
        text = QStringLiteral("D/can: rx id=0x%1 len=8 data=%2")
                   .arg(value % 0x7ff, 3, 16, QLatin1Char('0'))
                   .arg(value, 8, 16, QLatin1Char('0'));
        break;
    case 5:
        text = QStringLiteral("I/imu: roll=%1 pitch=%2")
                   .arg(around(0, 3), 0, 'f', 2)
                   .arg(around(1, 2), 0, 'f', 2);
        break;
    case 6:
        text = QStringLiteral("I/flash: 已写入第 %1 页, 校验通过").arg(value % 256);
        break;
    case 7:
        text = QStringLiteral("W/power: 母线电压偏低: %1 V").arg(around(22.8, 0.4), 0, 'f', 2);
        break;
    case 8:
        text = QStringLiteral("I/task: 空闲任务占用率 %1%").arg(value % 60 + 30);
        break;
    default:
        text = QStringLiteral("E/i2c: 从机 0x%1 无应答, 重试第 %2 次")
                   .arg(value % 0x70, 2, 16, QLatin1Char('0'))
                   .arg(value % 3 + 1);
    }
    return QStringLiteral("[%1] %2").arg(double(timeMs) / 1000.0, 9, 'f', 3).arg(text);
}

} // namespace Boardsim

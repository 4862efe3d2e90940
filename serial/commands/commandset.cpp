#include "commandset.h"

#include "csvtext.h"
#include "textcodec.h"

#include <functional>

namespace {

struct Column
{
    const char *title;
    std::function<QString(const Command &)> text;
    // False where the text is no value of the column.
    std::function<bool(Command *, const QString &)> set;
};

Column texts(const char *title, QString Command::*field, int maxLength)
{
    return {title, [field](const Command &command) { return command.*field; },
            [field, maxLength](Command *command, const QString &text) {
                command->*field = text;
                return text.size() <= maxLength && !text.contains(QLatin1Char('\n'));
            }};
}

Column numbers(const char *title, int Command::*field, int minimum, int maximum)
{
    return {title, [field](const Command &command) { return QString::number(command.*field); },
            [field, minimum, maximum](Command *command, const QString &text) {
                bool isNumber = false;
                command->*field = text.trimmed().toInt(&isNumber);
                return isNumber && command->*field >= minimum && command->*field <= maximum;
            }};
}

template <typename Value> Column choices(const char *title, Value Command::*field, const QStringList &names)
{
    return {title, [field, names](const Command &command) { return names.at(int(command.*field)); },
            [field, names](Command *command, const QString &text) {
                const int index = names.indexOf(text.trimmed());
                command->*field = static_cast<Value>(qMax(0, index));
                return index >= 0;
            }};
}

const QVector<Column> &columns()
{
    const QStringList isNot{QStringLiteral("0"), QStringLiteral("1")};
    static const QVector<Column> all{
        choices("选中", &Command::isTicked, isNot),
        texts("名称", &Command::name, Command::maxName),
        texts("数据", &Command::text, Command::maxText),
        choices("格式", &Command::isHex, {QStringLiteral("文本"), QStringLiteral("HEX")}),
        choices("行尾", &Command::lineEnd,
                {QStringLiteral("无"), QStringLiteral("CRLF"), QStringLiteral("LF"), QStringLiteral("CR")}),
        numbers("延时ms", &Command::delayMs, 0, Command::maxMs),
        texts("等待应答", &Command::answer, Command::maxText),
        choices("应答格式", &Command::isExpression, {QStringLiteral("文本"), QStringLiteral("正则")}),
        numbers("超时ms", &Command::timeoutMs, 1, Command::maxMs),
        choices("无应答时", &Command::otherwise,
                {QStringLiteral("停止"), QStringLiteral("继续"), QStringLiteral("重发")}),
        numbers("重发次数", &Command::repeats, 1, Command::maxRepeats),
        texts("备注", &Command::note, Command::maxText),
    };
    return all;
}

const Column *columnOf(const QString &title)
{
    for (const Column &column : columns())
        if (title.trimmed() == QString::fromUtf8(column.title))
            return &column;
    return nullptr;
}

QString tooMany()
{
    return QStringLiteral("超过%1条命令").arg(CommandSet::maxCommands);
}

} // namespace

QByteArray CommandSet::toCsv(const QVector<Command> &commands)
{
    QVector<QStringList> rows;
    QStringList titles;
    for (const Column &column : columns())
        titles.append(QString::fromUtf8(column.title));
    rows.append(titles);
    for (const Command &command : commands) {
        QStringList row;
        for (const Column &column : columns())
            row.append(column.text(command));
        rows.append(row);
    }
    return "\xEF\xBB\xBF" + CsvText::write(rows).toUtf8();
}

CommandSet::Read CommandSet::fromCsv(const QByteArray &file)
{
    QString text = TextCodec::decodeFile(file);
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    const QVector<QStringList> rows = CsvText::read(text);
    if (rows.isEmpty())
        return {{}, QStringLiteral("不是CSV文件，或引号没有成对")};
    if (rows.size() - 1 > maxCommands)
        return {{}, tooMany()};
    QVector<const Column *> found;
    bool hasText = false;
    for (const QString &title : rows.first()) {
        found.append(columnOf(title));
        hasText = hasText || (found.last() && found.last()->title == QByteArray("数据"));
    }
    if (!hasText)
        return {{}, QStringLiteral("首行没有“数据”一列")};
    Read read;
    for (int i = 1; i < rows.size(); ++i) {
        Command command;
        for (int field = 0; field < qMin(found.size(), rows.at(i).size()); ++field) {
            const Column *column = found.at(field);
            if (column && !column->set(&command, rows.at(i).at(field)))
                return {{},
                        QStringLiteral("第%1条命令的“%2”无效").arg(i).arg(QString::fromUtf8(column->title))};
        }
        read.commands.append(command);
    }
    return read;
}

QByteArray CommandSet::toList(const QVector<Command> &commands)
{
    QByteArray file;
    for (int i = 0; i < commands.size(); ++i)
        if (!commands.at(i).text.isEmpty())
            file += QByteArray::number(i) + '#' + commands.at(i).text.toUtf8() + '\n';
    return file;
}

CommandSet::Read CommandSet::fromList(const QByteArray &file)
{
    Read read;
    const QStringList lines = TextCodec::decodeFile(file).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const int separator = line.indexOf(QLatin1Char('#'));
        bool isNumber = false;
        line.left(separator).trimmed().toInt(&isNumber);
        if (separator < 0 || !isNumber)
            continue;
        if (read.commands.size() == maxCommands)
            return {{}, tooMany()};
        Command command;
        command.text = line.mid(separator + 1, Command::maxText);
        while (command.text.endsWith(QLatin1Char('\r')))
            command.text.chop(1);
        read.commands.append(command);
    }
    if (read.commands.isEmpty())
        read.fault = QStringLiteral("没有“序号#数据”形式的行");
    return read;
}

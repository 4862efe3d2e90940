#include "answerstore.h"

#include "safefile.h"

#include <QFile>
#include <QFileInfo>

AnswerStore::AnswerStore(const QString &fileName)
    : m_fileName(fileName)
{
}

QString AnswerStore::load()
{
    AnswerRules rules;
    QString reason;
    if (!readFile(&rules, &reason))
        return QStringLiteral("自动应答规则读取失败：%1").arg(reason);
    m_rules = AnswerRuleFile::merged(m_base, m_rules, rules); // with what could not be saved
    m_base = rules;
    return m_keptAside;
}

QString AnswerStore::save(const AnswerRules &rules)
{
    AnswerRules theirs;
    QString reason;
    m_rules = rules;
    if (!readFile(&theirs, &reason))
        return reason;
    m_rules = AnswerRuleFile::merged(m_base, rules, theirs);
    if (SafeFile::write(m_fileName, AnswerRuleFile::write(m_rules), &reason))
        m_base = m_rules;
    return reason;
}

// A file that is missing or was kept aside holds what this program knows of it: no
// rule goes because of that.
bool AnswerStore::readFile(AnswerRules *rules, QString *reason)
{
    m_keptAside.clear();
    QByteArray content;
    *rules = m_base;
    if (!SafeFile::read(m_fileName, AnswerRuleFile::maxBytes, &content, reason))
        return false;
    if (content.isNull())
        return true;
    QString fault;
    const std::optional<AnswerRules> read = AnswerRuleFile::read(content, &fault);
    if (!read)
        return keepAside(fault, reason);
    *rules = *read;
    return true;
}

bool AnswerStore::keepAside(const QString &fault, QString *reason)
{
    const QFileInfo info(m_fileName);
    QString name;
    for (int i = 1; name.isEmpty() || QFile::exists(name); ++i)
        name = QStringLiteral("%1/%2_bad%3.json").arg(info.path(), info.completeBaseName()).arg(i);
    QFile file(m_fileName);
    if (!file.rename(name)) {
        *reason = QStringLiteral("%1，且无法另存：%2").arg(fault, file.errorString());
        return false;
    }
    m_keptAside =
        QStringLiteral("自动应答规则文件有误（%1），已改名为%2").arg(fault, QFileInfo(name).fileName());
    return true;
}

#pragma once

// One value of conf/config.ini: where it is stored, what it is when the file
// holds nothing usable, and what a first start writes. A value changes through
// set(), which also writes it. Knows its place in the file, not the file: that
// is SettingsFile.

#include "settingsfile.h"

#include <QColor>
#include <QLatin1String>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <limits>
#include <optional>

class SettingBase;

// All settings, in the order of their declaration.
using SettingsTable = QVector<SettingBase *>;

// What the settings of one group of the file have in common.
class SettingsGroup
{
public:
    // What restoring does with a value that has no first-start value.
    enum Restoring { DropsUnwritten, KeepsUnwritten };

    SettingsGroup(SettingsTable *table, const char *name, Restoring restoring = DropsUnwritten);
    Q_DISABLE_COPY_MOVE(SettingsGroup)

private:
    friend class SettingBase;
    SettingsTable *m_table;
    QLatin1String m_name;
    Restoring m_restoring;
};

class SettingBase
{
public:
    QString path() const; // group/key
    bool isKeptAtRestoring() const { return m_isKept; }

    // Takes over the value in the file; the reading default where it is invalid.
    virtual void read(const QVariant &stored) = 0;

    // What the file would hold for the value in memory.
    virtual QVariant stored() const = 0;
    // Takes over such a value, for this run; false where it is none of the setting.
    virtual bool accept(const QVariant &stored) = 0;
    bool write() const; // the value in memory; see Setting::set()

    // Takes over the value in memory of a setting of the same declaration.
    virtual void assign(const SettingBase &other) = 0;

    // Invalid where a first start writes nothing.
    virtual QVariant firstStartValue() const = 0;

protected:
    SettingBase(SettingsGroup *group, const char *key);
    Q_DISABLE_COPY_MOVE(SettingBase)
    ~SettingBase() = default;

private:
    QLatin1String m_group;
    QLatin1String m_key;
    bool m_isKept;
};

// The values that a number may have.
struct SettingRange
{
    int min = -std::numeric_limits<int>::max();
    int max = std::numeric_limits<int>::max();
};

// How a type is stored. An empty result: what is stored is no value of the type.
namespace SettingFormat {
std::optional<int> parse(const QVariant &stored, const SettingRange &range, int);
std::optional<bool> parse(const QVariant &stored, const SettingRange &range, bool);
std::optional<QColor> parse(const QVariant &stored, const SettingRange &range, const QColor &);
std::optional<QString> parse(const QVariant &stored, const SettingRange &range, const QString &);
std::optional<QStringList> parse(const QVariant &stored, const SettingRange &range, const QStringList &);
QVariant format(int value);
QVariant format(bool value); // 0 or 1
QVariant format(const QColor &value);
QVariant format(const QString &value);
QVariant format(const QStringList &value);
} // namespace SettingFormat

constexpr std::nullopt_t notWritten = std::nullopt; // on first start

template <class T> class Setting final : public SettingBase
{
public:
    Setting(SettingsGroup *group, const char *key, const T &readingDefault,
            const std::optional<T> &firstStart = notWritten, SettingRange range = {})
        : SettingBase(group, key)
        , m_value(readingDefault)
        , m_readingDefault(readingDefault)
        , m_firstStart(firstStart)
        , m_range(range)
    {
    }

    const T &value() const { return m_value; }
    operator const T &() const { return m_value; }
    const T *operator->() const { return &m_value; }
    friend bool operator==(const Setting &setting, const T &value) { return setting.m_value == value; }

    // Changes the value and writes it. False where the file cannot be written;
    // the value is then good for this run only.
    bool set(const T &value)
    {
        m_value = value;
        return write();
    }
    // Writes nothing where the value is the same.
    void change(const T &value)
    {
        if (value != m_value)
            set(value);
    }
    // The file keeps what it has.
    void setForThisRun(const T &value) { m_value = value; }
    Setting &operator=(const T &value)
    {
        m_value = value;
        return *this;
    }

    void read(const QVariant &stored) override
    {
        m_value = SettingFormat::parse(stored, m_range, T()).value_or(m_readingDefault);
    }
    QVariant stored() const override { return SettingFormat::format(m_value); }
    bool accept(const QVariant &stored) override
    {
        const std::optional<T> value = SettingFormat::parse(stored, m_range, T());
        m_value = value.value_or(m_value);
        return value.has_value();
    }
    void assign(const SettingBase &other) override { m_value = static_cast<const Setting &>(other).m_value; }
    QVariant firstStartValue() const override
    {
        return m_firstStart ? SettingFormat::format(*m_firstStart) : QVariant();
    }

private:
    T m_value;
    T m_readingDefault;
    std::optional<T> m_firstStart;
    SettingRange m_range;
};

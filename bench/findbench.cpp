// Finding in a long session: time and memory over so many megabytes of log lines.
//   findbench [MEGABYTES]

#include "linesearch.h"
#include "linestore.h"
#include "loglines.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

namespace {

// Anonymous memory of the process, in KB.
long anonymousKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("RssAnon:"))
            return line.mid(8).trimmed().split(' ').first().toLong();
    return 0;
}

void find(const LineStore &store, const LineMatcher::Pattern &pattern)
{
    LineSearch search(store);
    QElapsedTimer total;
    total.start();
    search.start(LineMatcher(pattern));
    double first = -1;
    double worst = 0;
    bool hasMore = true;
    while (hasMore) {
        QElapsedTimer step;
        step.start();
        hasMore = search.step();
        worst = qMax(worst, double(step.nsecsElapsed()) / 1e6);
        if (first < 0 && search.count() > 0)
            first = double(total.nsecsElapsed()) / 1e6;
    }
    const double all = double(total.nsecsElapsed()) / 1e6;
    QElapsedTimer one;
    one.start();
    const bool found = search.at(search.count() / 2).has_value();
    std::printf(
        "%-32s %9lld found, first after %.1f ms, all after %.0f ms, longest slice %.1f ms, one of them "
        "again %.1f ms%s\n",
        qPrintable(pattern.text), static_cast<long long>(search.count()), first, all, worst,
        double(one.nsecsElapsed()) / 1e6, found ? "" : " (lost)");
}

} // namespace

int main(int argc, char *argv[])
{
    const qint64 bytes = (argc > 1 ? atoll(argv[1]) : 100) * 1000 * 1000;
    const QTemporaryDir folder;
    const long before = anonymousKb();
    LineStore store(folder.path());
    QElapsedTimer spent;
    spent.start();
    for (quint32 number = 0; store.text().size() < bytes; ++number)
        store.append(Boardsim::logLine(number, 1'700'000'000'000 + number * 2, 1) + '\n',
                     1'700'000'000'000 + number * 2);
    std::printf("%lld bytes in %lld lines stored in %lld ms, %ld KB of memory, %lld KB of them the index\n",
                static_cast<long long>(store.text().size()), static_cast<long long>(store.size()),
                static_cast<long long>(spent.elapsed()), anonymousKb() - before,
                static_cast<long long>(store.memoryBytes() / 1024));
    double worst = 0;
    for (int i = 0; i < 1000; ++i) {
        QElapsedTimer read;
        read.start();
        store.lines(store.size() * i / 1000, 50);
        worst = qMax(worst, double(read.nsecsElapsed()) / 1e6);
    }
    std::printf("50 lines at any place: at most %.2f ms\n", worst);
    using P = LineMatcher::Pattern;
    find(store, P{QStringLiteral("adc")});
    find(store, P{QStringLiteral("adc"), true});
    find(store, P{QStringLiteral("timeout"), false, true});
    find(store, P{QStringLiteral("不存在")});
    find(store, P{QStringLiteral("e"), true});
    find(store, P{QStringLiteral("[0-9]+ ms"), false, false, true});
    find(store, P{QStringLiteral("(adc|timeout).*[0-9]{3}$"), false, false, true});
}

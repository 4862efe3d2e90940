// The figures of a step against the response's formula, evaluated on a fine grid by
// the plainest search.

#include "stepfigures.h"

#include <QtTest>

#include <climits>
#include <cmath>
#include <functional>
#include <random>

Q_DECLARE_METATYPE(StepSample)

namespace {

using Response = std::function<double(double)>; // value at a time since the step

struct Case
{
    const char *name;
    Response response;
    double target;
    double end; // s
    int count;
    double noise; // RMS
};

Response delayed(double delay, const Response &response)
{
    return [=](double t) { return t < delay ? response(0) : response(t - delay); };
}

Response firstOrder(double from, double to, double lag)
{
    return [=](double t) { return to + (from - to) * std::exp(-t / lag); };
}

Response twoLags(double to, double a, double b)
{
    return [=](double t) { return to * (1 - (a * std::exp(-t / a) - b * std::exp(-t / b)) / (a - b)); };
}

Response swinging(double to, double frequency, double damping)
{
    const double damped = frequency * std::sqrt(1 - damping * damping);
    return [=](double t) {
        return to * (1 - std::exp(-damping * frequency * t) *
                             (std::cos(damped * t) + damping * frequency / damped * std::sin(damped * t)));
    };
}

Response limited(double low, double high, const Response &response)
{
    return [=](double t) { return std::clamp(response(t), low, high); };
}

Response ramp(double rate)
{
    return [=](double t) { return rate * t; };
}

const std::vector<Case> &cases()
{
    static const std::vector<Case> all{
        {"lag", firstOrder(0, 300, 0.4), 300, 4, 2000, 0},
        {"lag, few points", firstOrder(0, 300, 0.4), 300, 3.2, 50, 0},
        {"lag down from an offset", firstOrder(500, -100, 0.2), -100, 2, 1000, 0},
        {"lag with a steady error", firstOrder(0, 240, 0.3), 300, 3, 3000, 0},
        {"lag of a minute", firstOrder(20, 80, 60), 80, 600, 600, 0},
        {"lag of milliseconds", firstOrder(0, 1000, 0.002), 1000, 0.02, 200, 0},
        {"int32 extremes", firstOrder(INT_MIN, INT_MAX, 0.5), INT_MAX, 5, 1000, 0},
        {"delay", delayed(0.5, firstOrder(0, 100, 0.4)), 100, 5, 5000, 0},
        {"long delay", delayed(2, firstOrder(0, 100, 0.3)), 100, 6, 3000, 0},
        {"two lags", twoLags(300, 0.4, 0.1), 300, 4, 2000, 0},
        {"two lags, delayed", delayed(0.2, twoLags(300, 0.3, 0.2)), 300, 4, 400, 0},
        {"damping 0.2", swinging(300, 6, 0.2), 300, 6, 3000, 0},
        {"damping 0.5, few points", swinging(300, 4, 0.5), 300, 3.5, 50, 0},
        {"damping 0.7", swinging(1000, 10, 0.7), 1000, 2, 1000, 0},
        {"damping 0.3 down, delayed", delayed(0.3, swinging(-500, 8, 0.3)), -500, 4, 4000, 0},
        {"limited rate", limited(0, 300, ramp(150)), 300, 5, 1000, 0},
        {"stopped below the target", limited(0, 200, swinging(300, 3, 0.4)), 300, 5, 1000, 0},
        {"lag, noise 1 %", firstOrder(0, 300, 0.4), 300, 4, 5000, 3},
        {"damping 0.2, noise 1 %", swinging(300, 6, 0.2), 300, 6, 5000, 3},
        {"delay, noise 2 %", delayed(0.5, firstOrder(0, 100, 0.4)), 100, 5, 5000, 2},
    };
    return all;
}

QVector<StepSample> sampled(const Response &response, double end, int count, double noise = 0)
{
    std::mt19937 random(7);
    std::normal_distribution<double> deviate(0, 1);
    QVector<StepSample> samples;
    for (int k = -20; k < count; ++k) {
        const double t = end * k / (count - 1);
        samples.append({t, response(std::max(t, 0.0)) + noise * deviate(random)});
    }
    return samples;
}

// The figures of a formula: its value at a million times.
struct Reference
{
    explicit Reference(const Case &c)
    {
        const double from = c.response(0);
        const double movement = c.response(1e9 * c.end) - from;
        const auto firstAt = [&](double share) {
            double t = 0;
            while ((c.response(t) - from) / movement < share)
                t += c.end * 1e-6;
            return t;
        };
        deadTime = firstAt(0.02);
        delay = firstAt(0.5);
        rise = firstAt(0.9) - firstAt(0.1);
        const double dt = c.end / 200000;
        for (int k = 0; k < 200000; ++k) {
            const double t = (k + 0.5) * dt;
            const double y = c.response(t);
            const double share = (y - from) / movement;
            const double error = std::abs(c.target - y);
            if (share > top + 1e-9) {
                top = share;
                topTime = t;
            }
            if (std::abs(share - 1) > 0.02)
                settling = t;
            iae += error * dt;
            ise += error * error * dt;
            itae += t * error * dt;
        }
        final = from + movement;
    }
    double deadTime, delay, rise, final;
    double top = 0, topTime = 0, settling = 0, iae = 0, ise = 0, itae = 0;
};

void compare(const char *figure, const std::optional<double> &actual, double expected, double tolerance)
{
    const bool close = actual && std::abs(*actual - expected) <= tolerance;
    if (!close)
        QTest::qFail(qPrintable(QString("%1: %2, expected %3 +- %4")
                                    .arg(figure)
                                    .arg(actual ? QString::number(*actual, 'g', 8) : "none")
                                    .arg(expected, 0, 'g', 8)
                                    .arg(tolerance)),
                     __FILE__, __LINE__);
}

} // namespace

class TestPidAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void measures_data()
    {
        QTest::addColumn<int>("number");
        for (size_t k = 0; k < cases().size(); ++k)
            QTest::newRow(cases()[k].name) << int(k);
    }

    // Within 0.5 %; what noise moves within a few standard deviations.
    void measures()
    {
        QFETCH(int, number);
        const Case &c = cases()[size_t(number)];
        const Reference expected(c);
        const StepFigures figures =
            measureStep({sampled(c.response, c.end, c.count, c.noise), 0, c.target, {}, 0.02});
        const double from = c.response(0);
        const double movement = expected.final - from;
        const double noise = c.noise / std::abs(movement); // 1
        const double interval = c.count > 50 ? 0 : 0.2 * c.end / c.count;
        const double times = (noise > 0 ? 0.02 : 0.005) * expected.rise + interval;

        compare("delay", figures.delayTime, expected.delay, times);
        compare("rise", figures.riseTime, expected.rise, times);
        compare("steady", figures.steadyValue, expected.final, 0.005 * std::abs(movement));
        compare("steady error", figures.steadyError, c.target - expected.final, 0.005 * std::abs(movement));
        compare("peak", figures.peak, from + movement * expected.top,
                (0.005 + 1.5 * noise) * std::abs(movement));
        const double overshoot = 100 * (expected.top - 1);
        compare("overshoot", figures.overshoot, std::max(0.0, overshoot),
                0.005 * overshoot + 0.2 + 50 * noise);
        QCOMPARE(figures.peakTime.has_value(), overshoot > 1);
        if (figures.peakTime)
            compare("peak time", figures.peakTime, expected.topTime,
                    (0.005 + 0.5 * noise) * expected.topTime);
        if (c.noise > 0) {
            compare("noise", figures.noise, c.noise, 0.05 * c.noise);
        } else {
            compare("dead time", figures.deadTime, expected.deadTime, times);
            compare("settling", figures.settlingTime, expected.settling,
                    0.005 * expected.settling + interval);
            compare("iae", figures.iae, expected.iae, 0.005 * expected.iae);
            if (c.count > 50)
                compare("ise", figures.ise, expected.ise, 0.005 * expected.ise);
            compare("itae", figures.itae, expected.itae, 0.005 * expected.itae);
        }
        if (QByteArray(c.name).startsWith("damping 0.2")) {
            const double damped = 6 * std::sqrt(0.96);
            compare("period", figures.period, 2 * M_PI / damped, 0.01);
            compare("decay", figures.decayRatio, std::exp(-0.4 * M_PI * 6 / damped), 0.005 + noise);
        }
        compare("rate", figures.reportRate, (c.count - 1) / c.end, 0.001 * c.count / c.end);
    }

    void saysNothing_data()
    {
        QTest::addColumn<QVector<StepSample>>("samples");
        QTest::addColumn<double>("target");
        QTest::addColumn<QString>("known"); // figures, as named below

        const Response still = ramp(0);
        const Response swings = [](double t) { return 100 + 50 * std::sin(8 * t); };
        const Response impulse = [](double t) { return 400 * t * std::exp(-4 * t); };
        const QString integrals = " iae ise itae rate jitter";
        QTest::newRow("no sample") << QVector<StepSample>() << 300.0 << "";
        QTest::newRow("one sample") << QVector<StepSample>{{0, 5}} << 300.0 << "";
        QTest::newRow("two samples") << QVector<StepSample>{{0, 5}, {1, 6}} << 300.0 << "iae ise itae";
        QTest::newRow("all at once") << QVector<StepSample>(100, {1, 7}) << 300.0
                                     << "iae ise itae noise steady error";
        QTest::newRow("no step") << sampled(still, 5, 1000) << 0.0 << "steady error noise" + integrals;
        QTest::newRow("noise alone") << sampled(still, 5, 1000, 1) << 300.0
                                     << "steady error noise" + integrals;
        QTest::newRow("still moving")
            << sampled(firstOrder(0, 300, 2), 5, 1000) << 300.0 << "dead peak noise" + integrals;
        QTest::newRow("for ever") << sampled(ramp(40), 5, 1000, 1) << 300.0 << "dead peak noise" + integrals;
        QTest::newRow("swings without end")
            << sampled(swings, 5, 1000, 0.5) << 100.0 << "dead peak peaktime period decay noise" + integrals;
        QTest::newRow("comes back") << sampled(impulse, 5, 1000) << 0.0
                                    << "dead peak peaktime steady error noise" + integrals;
        QTest::newRow("seven samples")
            << sampled(firstOrder(0, 300, 0.4), 5, 7).mid(20) << 300.0 << integrals;
    }

    void saysNothing()
    {
        QFETCH(QVector<StepSample>, samples);
        QFETCH(double, target);
        QFETCH(QString, known);
        const StepFigures f = measureStep({samples, 0, target, {}, 0.02});
        const std::pair<const char *, std::optional<double>> figures[] = {{"dead", f.deadTime},
                                                                          {"delay", f.delayTime},
                                                                          {"rise", f.riseTime},
                                                                          {"peak", f.peak},
                                                                          {"peaktime", f.peakTime},
                                                                          {"overshoot", f.overshoot},
                                                                          {"settling", f.settlingTime},
                                                                          {"steady", f.steadyValue},
                                                                          {"error", f.steadyError},
                                                                          {"period", f.period},
                                                                          {"decay", f.decayRatio},
                                                                          {"noise", f.noise},
                                                                          {"iae", f.iae},
                                                                          {"ise", f.ise},
                                                                          {"itae", f.itae},
                                                                          {"rate", f.reportRate},
                                                                          {"jitter", f.jitter}};
        QStringList found;
        for (const auto &[name, value] : figures)
            if (value)
                found << name;
        QStringList expected = known.split(' ', Qt::SkipEmptyParts);
        found.sort();
        expected.sort();
        QCOMPARE(found.join(' '), expected.join(' '));
        if (f.decayRatio)
            compare("decay", f.decayRatio, 1, 0.02);
    }

    // Figures of a clean run, whatever else arrived between its samples.
    void survivesBadInput()
    {
        QVector<StepSample> samples = sampled(firstOrder(0, 300, 0.4), 4, 1000);
        const StepFigures clean = measureStep({samples, 0, 300, {}, 0.02});
        for (int k = 900; k > 0; k -= 100) {
            samples.insert(k, {samples[k].seconds - 0.05, samples[k].actual});
            samples.insert(k, {qQNaN(), 5});
            samples.insert(k, {samples[k].seconds, qInf()});
            samples.insert(k, samples[k]);
        }
        const StepFigures figures = measureStep({samples, 0, 300, qQNaN(), 0.02});
        compare("rise", figures.riseTime, *clean.riseTime, 0.01 * *clean.riseTime);
        compare("settling", figures.settlingTime, *clean.settlingTime, 0.01 * *clean.settlingTime);
        compare("itae", figures.itae, *clean.itae, 0.01 * *clean.itae);
    }
};

QTEST_APPLESS_MAIN(TestPidAnalysis)
#include "test_pid_analysis.moc"

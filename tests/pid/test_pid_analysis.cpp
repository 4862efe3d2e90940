// The figures of a step against the response's formula, evaluated on a fine grid by
// the plainest search; fits against processes integrated in steps of 0.1 ms; and the
// gains that follow, tried on the simulated board.

#include "pidboard.h"
#include "pidparser.h"
#include "plantfit.h"
#include "tuningrules.h"

#include <QtTest>

#include <climits>
#include <cmath>
#include <functional>
#include <random>

Q_DECLARE_METATYPE(StepSample)
Q_DECLARE_METATYPE(PlantModel)
Q_DECLARE_METATYPE(ParallelGains)
Q_DECLARE_METATYPE(StepInput)
Q_DECLARE_METATYPE(PlantFit::Problem)

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

const auto ramp = [](double rate) { return Response([=](double t) { return rate * t; }); };
const auto firstOrder = [](double from, double to, double lag) {
    return Response([=](double t) { return to + (from - to) * std::exp(-t / lag); });
};
const auto delayed = [](double delay, const Response &response) {
    return Response([=](double t) { return response(std::max(0.0, t - delay)); });
};
const auto limited = [](double low, double high, const Response &response) {
    return Response([=](double t) { return std::clamp(response(t), low, high); });
};

Response swinging(double to, double frequency, double damping)
{
    const double damped = frequency * std::sqrt(1 - damping * damping);
    return [=](double t) {
        return to * (1 - std::exp(-damping * frequency * t) *
                             (std::cos(damped * t) + damping * frequency / damped * std::sin(damped * t)));
    };
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
        {"damping 0.9", swinging(300, 8, 0.9), 300, 4, 2000, 0},
        {"damping 0.95, delayed", delayed(0.2, swinging(300, 6, 0.95)), 300, 4, 400, 0},
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

// The figures of a formula: its value at many times.
struct Reference
{
    explicit Reference(const Case &c)
    {
        const double from = c.response(0);
        const double movement = c.response(1e9 * c.end) - from;
        const auto firstAt = [&](double share) {
            double t = 0;
            while ((c.response(t) - from) / movement < share)
                t += c.end * 1e-5;
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

using Kind = PlantModel::Kind;

PlantModel process(Kind kind, double gain, double delay, double lagOrFrequency = 0, double damping = 0)
{
    return {kind, gain, lagOrFrequency, lagOrFrequency, damping, delay};
}

// 0.1 s at rest at 50, and 5 s after the target, or in an open loop the input, went up
// by 100. All but the limit counts from there.
QVector<StepSample> looped(const PlantModel &plant, const StepInput &input, double noise)
{
    constexpr double dt = 1e-4;
    std::mt19937 random(3);
    std::normal_distribution<double> deviate(0, noise);
    QVector<StepSample> samples;
    for (int k = -50; k < 0; ++k)
        samples.append({k * 0.002, 50 + deviate(random)});
    std::vector<double> inputs;
    double y = 0, slope = 0, integral = 0, last = 0;
    for (int k = 0; k < 50000; ++k) {
        if (k % 20 == 0)
            samples.append({k * dt, 50 + y + deviate(random)});
        if (!input.isClosed) {
            inputs.push_back(100);
        } else if (k % int(std::lround(input.period / dt)) == 0) {
            const double increment = input.gains.i * (100 - y) * input.period;
            const double speed = (y - last) / input.period;
            const double wanted = input.gains.p * (100 - y) + integral + increment - input.gains.d * speed;
            inputs.push_back(std::min(wanted, input.limit - 50 / plant.gain));
            if (inputs.back() == wanted || increment < 0)
                integral += increment;
            last = y;
        } else {
            inputs.push_back(inputs.back());
        }
        const int then = k - int(std::lround(plant.delay / dt));
        const double u = then < 0 ? 0 : plant.gain * inputs[size_t(then)];
        const double w = plant.frequency;
        if (plant.kind == Kind::SecondOrder)
            slope += dt * (w * w * (u - y) - 2 * plant.damping * w * slope);
        else if (plant.kind == Kind::Integrating)
            slope = u;
        else
            slope = (plant.kind == Kind::Unstable ? u + y : u - y) / plant.lag;
        y += dt * slope;
    }
    return samples;
}

// Eight seconds of one loop of the board, which starts at rest; with the gains built in
// where there are no others.
QVector<StepSample> boardRun(int channel, int rate, quint32 seed, const ParallelGains *gains)
{
    Boardsim::PidBoard board(rate, 1, seed);
    const auto command = [&](PidFrame::Command code, const QByteArray &payload) {
        board.receive(PidFrame::build(code, quint8(channel), payload));
    };
    if (gains)
        command(PidFrame::SetPid, PidFrame::floatToBytes(float(gains->p)) +
                                      PidFrame::floatToBytes(float(gains->i)) +
                                      PidFrame::floatToBytes(float(gains->d)));
    command(PidFrame::SetTarget, PidFrame::int32ToBytes(300));
    command(PidFrame::Start, {});
    PidParser parser;
    PidReport report;
    QVector<StepSample> samples;
    for (int ms = 1; ms <= 8000; ++ms) {
        board.advance(1);
        parser.append(board.takeOutput(), ms);
        while (parser.next(&report) == PidParser::Outcome::Report)
            if (report.command == PidFrame::Actual)
                samples.append({ms * 1e-3, double(report.value)});
    }
    return samples;
}

void compare(const char *figure, const std::optional<double> &actual, double expected, double tolerance)
{
    const QString text = actual ? QString::number(*actual, 'g', 8) : "nothing";
    QTest::qVerify(actual && std::abs(*actual - expected) <= tolerance, figure,
                   qPrintable(QString("%1, not %2").arg(text).arg(expected, 0, 'g', 8)), __FILE__, __LINE__);
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
        const double range = std::abs(movement);
        const double noise = c.noise / range;
        const double interval = c.count > 50 ? 0 : 0.2 * c.end / c.count;
        const double times = (noise > 0 ? 0.02 : 0.005) * expected.rise + interval;

        compare("delay", figures.delayTime, expected.delay, times);
        compare("rise", figures.riseTime, expected.rise, times);
        compare("steady", figures.steadyValue, expected.final, 0.005 * range);
        compare("steady error", figures.steadyError, c.target - expected.final, 0.005 * range);
        compare("peak", figures.peak, from + movement * expected.top, (0.005 + 1.5 * noise) * range);
        const double overshoot = 100 * (expected.top - 1);
        compare("overshoot", figures.overshoot, std::max(0.0, overshoot),
                0.005 * overshoot + 0.2 + 50 * noise);
        QCOMPARE(figures.peakTime.has_value(), overshoot > 0.1);
        if (figures.peakTime)
            compare("peak time", figures.peakTime, expected.topTime, (0.005 + noise / 2) * expected.topTime);
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
            const double period = 2 * std::acos(-1.0) / (6 * std::sqrt(0.96));
            compare("period", figures.period, period, 0.01);
            compare("decay", figures.decayRatio, std::exp(-0.2 * 6 * period), 0.005 + noise);
        }
        compare("rate", figures.reportRate, (c.count - 1) / c.end, 0.001 * c.count / c.end);
    }

    void saysNothing_data()
    {
        QTest::addColumn<QVector<StepSample>>("samples");
        QTest::addColumn<double>("target");
        QTest::addColumn<QString>("known"); // figures, as named below

        const Response swings = [](double t) { return 100 + 50 * std::sin(8 * t); };
        const Response impulse = [](double t) { return 400 * t * std::exp(-4 * t); };
        const QString sums = "iae ise itae";
        const QString all = sums + " noise rate jitter";
        const QString steady = all + " steady error";
        const QString moving = all + " dead peak";
        QTest::newRow("no sample") << QVector<StepSample>() << 300.0 << "";
        QTest::newRow("one sample") << QVector<StepSample>{{0, 5}} << 300.0 << "";
        QTest::newRow("two samples") << QVector<StepSample>{{0, 5}, {1, 6}} << 300.0 << sums;
        QTest::newRow("at once") << QVector<StepSample>(9, {1, 7}) << 300.0 << sums + " noise steady error";
        QTest::newRow("seven") << sampled(ramp(9), 5, 7).mid(20) << 300.0 << sums + " rate jitter";
        QTest::newRow("no step") << sampled(ramp(0), 5, 1000) << 0.0 << steady;
        QTest::newRow("noise alone") << sampled(ramp(0), 5, 1000, 1) << 300.0 << steady;
        QTest::newRow("still moving") << sampled(firstOrder(0, 300, 2), 5, 1000) << 300.0 << moving;
        QTest::newRow("ramp") << sampled(ramp(40), 5, 1000, 1) << 300.0 << moving;
        QTest::newRow("swings") << sampled(swings, 5, 1000, 0.5) << 100.0
                                << moving + " peaktime period decay";
        QTest::newRow("comes back") << sampled(impulse, 5, 1000) << 0.0 << steady + " dead peak peaktime";
    }

    void saysNothing()
    {
        QFETCH(QVector<StepSample>, samples);
        QFETCH(double, target);
        QFETCH(QString, known);
        const StepFigures f = measureStep({samples, 0, target, {}, 0.02});
        const char *const names[] = {"dead",     "delay",  "rise",  "peak",   "peaktime", "overshoot",
                                     "settling", "steady", "error", "period", "decay",    "noise",
                                     "iae",      "ise",    "itae",  "rate",   "jitter"};
        const std::optional<double> figures[] = {
            f.deadTime,     f.delayTime,   f.riseTime,    f.peak,       f.peakTime,   f.overshoot,
            f.settlingTime, f.steadyValue, f.steadyError, f.period,     f.decayRatio, f.noise,
            f.iae,          f.ise,         f.itae,        f.reportRate, f.jitter};
        const QStringList expected = known.split(' ');
        for (size_t k = 0; k < std::size(names); ++k)
            QVERIFY2(figures[k].has_value() == expected.contains(names[k]), names[k]);
        if (f.decayRatio)
            compare("decay", f.decayRatio, 1, 0.02);
    }

    // What arrives between the samples of a clean run changes little.
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
        // Still creeping up is no overshoot.
        compare("overshoot",
                measureStep({sampled(firstOrder(0, 300, 0.5), 3, 500), 0, 300, {}, 0.02}).overshoot, 0, 0);

        // 1000 reports a second, which a driver hands over every 16 ms.
        QVector<StepSample> bursts = sampled(ramp(1), 1.6, 1601);
        for (StepSample &sample : bursts)
            sample.seconds = 0.016 * std::ceil(sample.seconds / 0.016 - 1e-9);
        const StepFigures burst = measureStep({bursts, 0, 1, {}, 0.02});
        compare("rate", burst.reportRate, 1000, 10);
        compare("jitter", burst.jitter, 0.001875, 0.0001);
    }

    void fits_data()
    {
        QTest::addColumn<PlantModel>("plant");
        QTest::addColumn<ParallelGains>("gains"); // of the loop; none: open
        QTest::addColumn<double>("limit");
        using Gains = ParallelGains;
        QTest::newRow("lag") << process(Kind::FirstOrder, 2, 0.1, 0.4) << Gains() << 1e9;
        QTest::newRow("swing") << process(Kind::SecondOrder, 1.5, 0.1, 6, 0.25) << Gains() << 1e9;
        QTest::newRow("integrator") << process(Kind::Integrating, 3, 0.5) << Gains() << 1e9;
        QTest::newRow("lag, PI") << process(Kind::FirstOrder, 2, 0.1, 0.4) << Gains{0.8, 1, 0} << 1e9;
        QTest::newRow("lag, P") << process(Kind::FirstOrder, 0.5, 0.05, 0.3) << Gains{3, 0, 0} << 1e9;
        QTest::newRow("lag, PID") << process(Kind::FirstOrder, 1, 0.2, 0.5) << Gains{1, 2, 0.05} << 1e9;
        QTest::newRow("swing, PI") << process(Kind::SecondOrder, 1, 0.1, 6, 0.25) << Gains{0.2, 1, 0} << 1e9;
        QTest::newRow("two lags, PI")
            << process(Kind::SecondOrder, 1, 0.1, 5, 1.5) << Gains{0.8, 1.5, 0} << 1e9;
        QTest::newRow("integrator, PI") << process(Kind::Integrating, 3, 0.1) << Gains{0.8, 0.3, 0} << 1e9;
        QTest::newRow("runs away, PI") << process(Kind::Unstable, 2, 0.05, 0.667) << Gains{1.5, 1, 0} << 1e9;
        QTest::newRow("at the limit") << process(Kind::FirstOrder, 2, 0.1, 0.4) << Gains{0.8, 1, 0} << 90.0;
        QTest::newRow("no dead time") << process(Kind::FirstOrder, 1, 0, 0.4) << Gains{0.8, 1, 0} << 1e9;
    }

    // Within 5 % at a noise of 2 %, with a controller that acts every 10 ms.
    void fits()
    {
        QFETCH(PlantModel, plant);
        QFETCH(ParallelGains, gains);
        QFETCH(double, limit);
        const StepInput input{gains.p > 0, 1, gains, 0.01, limit};
        const PlantFit fit = fitPlant({looped(plant, input, 2), 50, 150, {}, 0.02}, input);
        QCOMPARE(int(fit.problem), int(PlantFit::Problem::None));
        QCOMPARE(int(fit.model.kind), int(plant.kind));
        compare("gain", fit.model.gain, plant.gain, 0.05 * plant.gain);
        const bool swings = plant.kind == Kind::SecondOrder;
        compare("time", swings ? fit.model.frequency : fit.model.lag, plant.lag, 0.05 * plant.lag);
        compare("damping", fit.model.damping, plant.damping, 0.05 * plant.damping);
        QCOMPARE(fit.delayAtMost.has_value(), plant.delay == 0);
        compare("dead time", fit.model.delay, plant.delay, std::max(0.002, 0.05 * plant.delay));
        compare("residual", fit.residual, 2, 0.2);
        QCOMPARE(fit.curve.size(), 2550);
        const auto simulated = simulateStep(Dynamics::of(fit.model), input, 50, 50, 150, 0.01, 101);
        compare("curve at 1 s", fit.curve[50 + 500], simulated.back(), 0.02 * (simulated.back() - 50));
    }

    void fitsNothing_data()
    {
        QTest::addColumn<QVector<StepSample>>("samples");
        QTest::addColumn<StepInput>("input");
        QTest::addColumn<PlantFit::Problem>("problem");
        using Problem = PlantFit::Problem;
        const auto closed = [](double p, double i, double limit = 0) {
            return StepInput{true, 1, {p, i, 0}, 0, limit, 0, true};
        };
        const StepInput usual = closed(0.8, 1);
        const Response lag = firstOrder(0, 300, 0.4);
        const Response steps = [](double t) { return 100 * std::floor(std::fmod(t, 3)) + 10 * t; };
        QTest::newRow("no sample") << QVector<StepSample>() << usual << Problem::TooFewSamples;
        QTest::newRow("19 samples") << sampled(lag, 3, 18).mid(0, 18) << usual << Problem::TooFewSamples;
        QTest::newRow("too fast") << sampled(firstOrder(0, 300, 0.001), 5, 50) << usual
                                  << Problem::TooFewSamples;
        QTest::newRow("no gains") << sampled(lag, 3, 1000) << closed(0, 0) << Problem::NoInput;
        QTest::newRow("no numbers") << sampled(lag, 3, 1000) << closed(qQNaN(), 1) << Problem::NoInput;
        QTest::newRow("still") << sampled(ramp(0), 3, 1000, 1) << usual << Problem::NoMovement;
        QTest::newRow("small") << sampled(firstOrder(0, 3, 0.4), 3, 5000, 1) << usual
                               << Problem::StepTooSmall;
        QTest::newRow("a jump") << sampled(delayed(1, firstOrder(0, 300, 0.01)), 2, 25, 3)
                                << StepInput{false, 1, {}} << Problem::NotIdentifiable;
        QTest::newRow("no process") << sampled(steps, 6, 1000) << usual << Problem::PoorFit;
        QTest::newRow("at the limit") << sampled(steps, 6, 1000) << closed(8, 1, 100) << Problem::Saturated;
    }

    void fitsNothing()
    {
        QFETCH(QVector<StepSample>, samples);
        QFETCH(StepInput, input);
        QFETCH(PlantFit::Problem, problem);
        const PlantFit fit = fitPlant({samples, 0, 300, {}, 0.02}, input);
        QCOMPARE(int(fit.problem), int(problem));
    }

    void tunesTheBoard_data()
    {
        QTest::addColumn<int>("channel");
        QTest::addColumn<int>("rate"); // reports per second
        for (int channel = 1; channel <= 5; ++channel)
            for (int rate : {100, 300, 1000})
                QTest::addRow("loop %d, %d/s", channel, rate) << channel << rate;
    }

    // From the run with the gains built in to a better one.
    void tunesTheBoard()
    {
        QFETCH(int, channel);
        QFETCH(int, rate);
        constexpr double builtIn[] = {0.8, 0.2, 0.5, 0.3, 1.5};
        StepInput input{true, 1, {builtIn[channel - 1], 1, 0}, 0.01, 1000, 0.02, true};
        const Step before{boardRun(channel, rate, 1, nullptr), 0, 300, {}, 0.02};
        const PlantFit fit = fitPlant(before, input);
        QCOMPARE(int(fit.problem), int(PlantFit::Problem::None));

        const Tuning tuning = simcTuning(fit.model, ControllerKind::Pid, 1, {input.period, 1.0 / rate});
        QCOMPARE(int(tuning.problem), int(Tuning::Problem::None));
        const StepFigures old = measureStep(before);
        const Step after{boardRun(channel, rate, 2, &tuning.gains), 0, 300, {}, 0.02};
        const StepFigures now = measureStep(after);
        compare("overshoot", now.overshoot, 5, 5);
        compare("steady error", now.steadyError, 0, 1);
        QVERIFY2(*now.iae < 0.5 * *old.iae, qPrintable(QString("%1, was %2").arg(*now.iae).arg(*old.iae)));

        // The better run, in which a loop may reach its limit, says the same.
        input.gains = tuning.gains;
        const PlantFit again = fitPlant(after, input);
        QCOMPARE(int(again.problem), int(PlantFit::Problem::None));
        compare("gain", again.model.gain, fit.model.gain, 0.15 * fit.model.gain);
    }

    // Numbers of the papers' formulas, calculated by hand.
    void rules()
    {
        const auto check = [](const Tuning &tuning, const ParallelGains &expected) {
            QCOMPARE(int(tuning.problem), int(Tuning::Problem::None));
            compare("P", tuning.gains.p, expected.p, 1e-3 * expected.p);
            compare("I", tuning.gains.i, expected.i, 1e-3 * expected.i);
            compare("D", tuning.gains.d, expected.d, 1e-3 * expected.d);
        };
        const LoopTiming none;
        const auto pi = ControllerKind::Pi;
        const auto pid = ControllerKind::Pid;
        const PlantModel lag = process(Kind::FirstOrder, 2, 1, 4);
        const PlantModel integrator = process(Kind::Integrating, 0.5, 2);
        const PlantModel twoLags = process(Kind::SecondOrder, 2, 1, 0.5, 1.25); // 4 s and 1 s
        check(simcTuning(lag, pi, 1, none), {1, 0.25, 0});
        check(simcTuning(lag, pi, 3, {0.5, 3}), {2 / 7.0, 1 / 14.0, 0}); // dead time 1.75
        check(simcTuning(integrator, pi, 1, none), {0.5, 0.03125, 0});
        check(simcTuning(twoLags, pid, 1, none), {1.25, 0.25, 1});
        check(simcTuning(twoLags, pi, 1, none), {0.75, 1 / 6.0, 0}); // 4.5 s behind 1.5 s
        const PlantModel swing = process(Kind::SecondOrder, 2, 1, 0.5, 0.25);
        check(simcTuning(swing, pi, 1, none), {0, 0.0625, 0});    // of the resonance
        check(simcTuning(swing, pid, 5, none), {0, 1 / 24.0, 0}); // too late to damp
        check(amigoTuning(lag, pi, none), {0.455, 0.13874, 0});
        check(amigoTuning(lag, pid, none), {1, 0.38889, 0.46512});
        check(amigoTuning(integrator, pi, none), {0.35, 0.35 / 26.8, 0});
        check(amigoTuning(integrator, pid, none), {0.45, 0.028125, 0.45});

        StepFigures swinging;
        swinging.period = 2;
        swinging.decayRatio = 0.97;
        const UltimatePoint point = ultimatePoint(swinging, {10, 0, 0});
        check(zieglerNicholsTuning(point, ControllerKind::P), {5, 0, 0});
        check(zieglerNicholsTuning(point, pi), {4.5, 2.7, 0});
        check(zieglerNicholsTuning(point, pid), {6, 6, 1.5});

        using Limit = UltimatePoint::Problem;
        const auto limitOf = [&](double decay, const ParallelGains &gains) {
            swinging.decayRatio = decay;
            return ultimatePoint(swinging, gains).problem;
        };
        QVERIFY(limitOf(0.8, {10, 0, 0}) == Limit::Dying);
        QVERIFY(limitOf(1.2, {10, 0, 0}) == Limit::Growing);
        QVERIFY(limitOf(1, {10, 1, 0}) == Limit::NotProportional);
        QVERIFY(ultimatePoint({}, {10, 0, 0}).problem == Limit::NoSwing);
        using Problem = Tuning::Problem;
        const std::pair<double, Problem> gains[] = {{-2, Problem::Negative},
                                                    {1e-40, Problem::TooLarge},
                                                    {1e40, Problem::TooSmall},
                                                    {0, Problem::NoNumber},
                                                    {qQNaN(), Problem::NoNumber}};
        for (const auto &[gain, problem] : gains)
            QCOMPARE(int(simcTuning(process(Kind::FirstOrder, gain, 1, 4), pi, 1, none).problem),
                     int(problem));
        QVERIFY(simcTuning(process(Kind::Unstable, 1, 4, 4), pi, 1, none).problem == Problem::NoRule);
        QVERIFY(amigoTuning(twoLags, pid, none).problem == Problem::NoRule);
        QVERIFY(amigoTuning(process(Kind::FirstOrder, 1, 0, 4), pi, none).problem == Problem::NoNumber);
    }

    void convertsGains()
    {
        const std::pair<GainForm, ParallelGains> boards[] = {{GainForm::Parallel, {2, 4, 0.5}},
                                                             {GainForm::PerPeriod, {2, 0.04, 50}},
                                                             {GainForm::Standard, {2, 0.5, 0.25}}};
        for (const auto &[form, board] : boards) {
            const auto there = toBoard({2, 4, 0.5}, form, 0.01);
            const auto back = fromBoard(board, form, 0.01);
            QVERIFY(there && back);
            const double actual[] = {there->p, there->i, there->d, back->p, back->i, back->d};
            const double expected[] = {board.p, board.i, board.d, 2, 4, 0.5};
            for (int k = 0; k < 6; ++k)
                compare("number", actual[k], expected[k], 1e-9);
            QCOMPARE(toBoard(board, form, 0).has_value(), form != GainForm::PerPeriod);
            QCOMPARE(fromBoard(board, form, 0).has_value(), form != GainForm::PerPeriod);
            QCOMPARE(toBoard({0, 4, 0}, form, 1).has_value(), form != GainForm::Standard);
        }
    }
};

QTEST_APPLESS_MAIN(TestPidAnalysis)
#include "test_pid_analysis.moc"

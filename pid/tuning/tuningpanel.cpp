#include "tuningpanel.h"

#include "pidrecorder.h"
#include "runfigures.h"
#include "settings.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>

#include <cmath>

namespace {

enum Rule { Simc, Amigo, ZieglerNichols }; // by index in the list

constexpr double kPeriodUnits[] = {1e-3, 1e-6, 1}; // seconds
constexpr double kSlowest = 5;                     // times the dead time
constexpr double kFastest = 0.5;

QString fitProblemText(PlantFit::Problem problem)
{
    using Problem = PlantFit::Problem;
    switch (problem) {
    case Problem::TooFewSamples:
        return QStringLiteral("数据太少，无法拟合模型：请提高上报频率或等待响应走完");
    case Problem::NoInput:
        return QStringLiteral("目标值没有变化或增益为0，没有可分析的阶跃");
    case Problem::NoMovement:
        return QStringLiteral("实际值没有离开噪声，无法拟合模型：请加大阶跃");
    case Problem::StepTooSmall:
        return QStringLiteral("响应幅度小于噪声的5倍，无法拟合模型：请加大阶跃");
    case Problem::Saturated:
        return QStringLiteral("输出曾达到限幅，模型不可信：请减小阶跃");
    case Problem::PoorFit:
        return QStringLiteral("没有模型与曲线相符，不给出建议：请检查增益形式、周期单位，输出是否达到限幅");
    case Problem::NotIdentifiable:
        return QStringLiteral("数据不足以确定增益（其他模型同样相符），不给出建议：请等待响应稳定或加大阶跃");
    case Problem::None:
        break;
    }
    return {};
}

QString tuningProblemText(Tuning::Problem problem)
{
    using Problem = Tuning::Problem;
    switch (problem) {
    case Problem::NoRule:
        return QStringLiteral("该规则不适用于这种对象和控制器");
    case Problem::NoNumber:
        return QStringLiteral("模型没有增益，无法计算");
    case Problem::Negative:
        return QStringLiteral("对象反向动作，需要负的增益，输入框不接受负数");
    case Problem::TooLarge:
        return QStringLiteral("计算出的增益超出范围");
    case Problem::TooSmall:
        return QStringLiteral("计算出的增益小于可输入的位数");
    case Problem::None:
        break;
    }
    return {};
}

QString ultimateProblemText(UltimatePoint::Problem problem)
{
    using Problem = UltimatePoint::Problem;
    switch (problem) {
    case Problem::NotProportional:
        return QStringLiteral("请先把I、D设为0，只用P使回路等幅振荡");
    case Problem::NoSwing:
        return QStringLiteral("没有振荡：请增大P，直到等幅振荡");
    case Problem::Dying:
        return QStringLiteral("振荡在衰减：请再稍微增大P");
    case Problem::Growing:
        return QStringLiteral("振荡在增大：请减小P");
    case Problem::None:
        break;
    }
    return {};
}

QString number(double value)
{
    return QString::number(value, 'g', 4);
}

} // namespace

TuningPanel::TuningPanel(const PidRecorder *recorder, RunFigures *figures, QWidget *parent)
    : QWidget(parent)
    , m_recorder(recorder)
    , m_figures(figures)
    , m_job(new FitJob(this))
    , m_which(new QLabel(this))
    , m_loop(new QComboBox(this))
    , m_form(new QComboBox(this))
    , m_unit(new QComboBox(this))
    , m_limit(new QSpinBox(this))
    , m_analyze(new QPushButton(QStringLiteral("分析"), this))
    , m_model(new QLabel(this))
    , m_rule(new QComboBox(this))
    , m_controller(new QComboBox(this))
    , m_speed(new QSlider(Qt::Horizontal, this))
    , m_result(new QLabel(this))
    , m_apply(new QPushButton(QStringLiteral("填入PID值"), this))
{
    buildUi();
    load();
    connectParts();
    setRun(0);
}

// ---- building

void TuningPanel::buildUi()
{
    m_which->setObjectName(QStringLiteral("labelTuningRun"));
    m_which->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_model->setObjectName(QStringLiteral("labelTuningModel"));
    m_model->setWordWrap(true);
    m_result->setObjectName(QStringLiteral("labelTuningResult"));
    m_result->setWordWrap(true);
    m_apply->setObjectName(QStringLiteral("btnApplyTuning"));
    m_apply->setToolTip(QStringLiteral("填入左侧的P、I、D输入框，不发送；确认后点击“发送PID”"));
    m_analyze->setObjectName(QStringLiteral("btnAnalyze"));
    m_analyze->setToolTip(QStringLiteral("对所选的运行拟合对象模型"));

    auto *top = new QHBoxLayout;
    top->setSpacing(8);
    top->addWidget(m_which, 1);
    top->addWidget(m_analyze);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 4, 0, 0);
    column->setSpacing(4);
    column->addLayout(top);
    column->addLayout(buildChoices());
    column->addWidget(m_model);
    column->addLayout(buildResult());
    column->addStretch();
}

QLayout *TuningPanel::buildChoices()
{
    m_loop->setObjectName(QStringLiteral("comboTuningLoop"));
    m_loop->addItems({QStringLiteral("闭环"), QStringLiteral("开环")});
    m_loop->setToolTip(QStringLiteral("闭环：PID在控制；开环：目标值直接作为输出"));
    m_form->setObjectName(QStringLiteral("comboGainForm"));
    m_form->addItems({QStringLiteral("并联（I每秒，D秒）"), QStringLiteral("并联（按周期累加）"),
                      QStringLiteral("标准（Kc、Ti、Td）")});
    m_form->setToolTip(
        QStringLiteral("开发板怎样使用P、I、D。按周期累加：积分直接累加误差，微分直接取差值，不乘除周期"));
    m_unit->setObjectName(QStringLiteral("comboPeriodUnit"));
    m_unit->addItems({QStringLiteral("毫秒"), QStringLiteral("微秒"), QStringLiteral("秒")});
    m_unit->setToolTip(QStringLiteral("开发板上报的“周期”的单位"));
    m_limit->setObjectName(QStringLiteral("spinOutputLimit"));
    m_limit->setRange(0, 1000000000);
    m_limit->setSpecialValueText(QStringLiteral("未知"));
    m_limit->setToolTip(QStringLiteral("控制器输出的限幅（正负相同），0为未知"));
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    const auto add = [this, row](const QString &text, QWidget *field) {
        auto *label = new QLabel(text, this);
        label->setBuddy(field);
        row->addWidget(label);
        row->addWidget(field);
    };
    add(QStringLiteral("响应"), m_loop);
    add(QStringLiteral("增益形式"), m_form);
    add(QStringLiteral("周期单位"), m_unit);
    add(QStringLiteral("输出限幅"), m_limit);
    row->addStretch();
    return row;
}

QLayout *TuningPanel::buildResult()
{
    m_rule->setObjectName(QStringLiteral("comboTuningRule"));
    m_rule->addItems({QStringLiteral("SIMC"), QStringLiteral("AMIGO"), QStringLiteral("Ziegler-Nichols")});
    m_rule->setToolTip(QStringLiteral(
        "Ziegler-Nichols：由等幅振荡的临界增益和周期计算，不需要模型；临界增益是能维持等幅振荡的最小的P"));
    m_controller->setObjectName(QStringLiteral("comboTuningController"));
    m_controller->addItems({QStringLiteral("PID"), QStringLiteral("PI")});
    m_controller->setToolTip(QStringLiteral("不需要微分的对象，PID的D为0"));
    m_speed->setObjectName(QStringLiteral("sliderTuningSpeed"));
    m_speed->setRange(0, 100);
    m_speed->setMinimumWidth(80);
    m_speed->setMaximumWidth(140);
    m_speed->setToolTip(QStringLiteral("SIMC的快慢：慢则平稳，快则迅速"));
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    auto *rule = new QLabel(QStringLiteral("规则"), this);
    rule->setBuddy(m_rule);
    row->addWidget(rule);
    row->addWidget(m_rule);
    row->addWidget(m_controller);
    row->addWidget(new QLabel(QStringLiteral("慢"), this));
    row->addWidget(m_speed);
    row->addWidget(new QLabel(QStringLiteral("快"), this));
    row->addWidget(m_result, 1);
    row->addWidget(m_apply);
    return row;
}

void TuningPanel::connectParts()
{
    const auto changed = QOverload<int>::of(&QComboBox::activated);
    for (const QComboBox *box : {m_loop, m_form, m_unit})
        connect(box, changed, this, [this] {
            store();
            clearResult(QStringLiteral("设置已改变，请重新分析"));
        });
    connect(m_limit, &QSpinBox::editingFinished, this, [this] {
        if (Settings::instance().pid.outputLimit == m_limit->value())
            return;
        store();
        clearResult(QStringLiteral("设置已改变，请重新分析"));
    });
    for (const QComboBox *box : {m_rule, m_controller})
        connect(box, changed, this, [this] {
            store();
            showTuning();
        });
    connect(m_speed, &QSlider::valueChanged, this, [this] {
        store();
        showTuning();
    });
    connect(m_analyze, &QPushButton::clicked, this, &TuningPanel::analyze);
    connect(m_job, &FitJob::finished, this, &TuningPanel::showFit);
    connect(m_apply, &QPushButton::clicked, this, [this] {
        if (const PidRun *run = m_recorder->runs()->find(m_fittedRun))
            emit gainsProposed(run->channel, m_proposed);
    });
}

void TuningPanel::load()
{
    const auto &choices = Settings::instance().pid;
    const bool isOther =
        (m_loop->currentIndex() == 1) != choices.openLoop || m_form->currentIndex() != choices.gainForm ||
        m_unit->currentIndex() != choices.periodUnit || m_limit->value() != choices.outputLimit;
    m_loop->setCurrentIndex(choices.openLoop ? 1 : 0);
    m_form->setCurrentIndex(choices.gainForm);
    m_unit->setCurrentIndex(choices.periodUnit);
    m_limit->setValue(choices.outputLimit);
    m_rule->setCurrentIndex(std::min<int>(choices.tuningRule, m_rule->count() - 1));
    m_controller->setCurrentIndex(choices.tuningController);
    m_speed->setValue(choices.tuningSpeed);
    if (m_fittedRun == 0)
        return;
    if (isOther)
        clearResult(QStringLiteral("设置已改变，请重新分析"));
    else
        showTuning();
}

void TuningPanel::store()
{
    auto &choices = Settings::instance().pid;
    choices.openLoop.change(m_loop->currentIndex() == 1);
    choices.gainForm.change(m_form->currentIndex());
    choices.periodUnit.change(m_unit->currentIndex());
    choices.outputLimit.change(m_limit->value());
    choices.tuningRule.change(m_rule->currentIndex());
    choices.tuningController.change(m_controller->currentIndex());
    choices.tuningSpeed.change(m_speed->value());
}

// ---- the fit

void TuningPanel::setRun(int id)
{
    const PidRun *run = m_recorder->runs()->find(id);
    m_run = run ? id : 0;
    m_analyze->setEnabled(run);
    m_which->setText(run ? QStringLiteral("所选运行：CH%1 %2目标值%3")
                               .arg(run->channel + 1)
                               .arg(run->name.isEmpty() ? QString() : run->name + QLatin1Char(' '))
                               .arg(run->target)
                         : QStringLiteral("请在“运行记录”中选择一次运行"));
    if (id != m_fittedRun)
        clearResult(run ? QStringLiteral("点击“分析”拟合对象模型") : QString());
}

void TuningPanel::clearResult(const QString &text)
{
    m_fittedRun = 0;
    m_fit = {};
    m_model->setText(text);
    m_result->clear();
    m_apply->setEnabled(false);
    emit fitted({});
}

double TuningPanel::periodOf(const PidRun &run) const
{
    return run.period * kPeriodUnits[m_unit->currentIndex()];
}

void TuningPanel::analyze()
{
    const PidRun *run = m_recorder->runs()->find(m_run);
    if (!run)
        return;
    m_step = m_figures->stepOf(*run);
    StepInput input;
    input.isClosed = m_loop->currentIndex() == 0;
    input.period = periodOf(*run);
    input.limit = m_limit->value();
    input.wasOff = run->isStart;
    const ParallelGains numbers{double(run->gains.p), double(run->gains.i), double(run->gains.d)};
    const auto gains = fromBoard(numbers, GainForm(m_form->currentIndex()), input.period);
    if (input.isClosed && !gains) {
        clearResult(QStringLiteral("这种增益形式需要周期（或I不为0时需要P），请让开发板上报周期"));
        return;
    }
    clearResult(QStringLiteral("正在分析…"));
    m_boardGains = gains.value_or(ParallelGains());
    input.gains = m_boardGains;
    m_fittedRun = run->id;
    m_analyze->setEnabled(false);
    m_job->start(m_step, input);
}

void TuningPanel::showFit(const PlantFit &fit)
{
    m_analyze->setEnabled(m_run > 0);
    const PidRun *run = m_recorder->runs()->find(m_fittedRun);
    if (!run)
        return; // deleted, or another choice meanwhile
    m_fit = fit;
    QVector<QPointF> curve;
    for (int i = 0; i < fit.curve.size() && i < m_step.samples.size(); ++i)
        curve.append({double(run->beginUs) + m_step.samples.at(i).seconds * 1e6, fit.curve.at(i)});
    emit fitted(curve);
    const QString problem = fitProblemText(fit.problem);
    m_model->setText(!fit.hasModel()     ? problem
                     : problem.isEmpty() ? modelText(*run)
                                         : modelText(*run) + QLatin1Char('\n') + problem);
    showTuning();
}

QString TuningPanel::modelText(const PidRun &run) const
{
    const PlantModel &model = m_fit.model;
    QString text;
    switch (model.kind) {
    case PlantModel::Kind::FirstOrder:
        text = QStringLiteral("一阶惯性：K=%1，T=%2 s").arg(number(model.gain), number(model.lag));
        break;
    case PlantModel::Kind::SecondOrder:
        text = QStringLiteral("二阶：K=%1，ω=%2 rad/s，ζ=%3")
                   .arg(number(model.gain), number(model.frequency), number(model.damping));
        break;
    case PlantModel::Kind::Integrating:
        text = QStringLiteral("积分对象：K=%1 /s").arg(number(model.gain));
        break;
    case PlantModel::Kind::Unstable:
        text = QStringLiteral("不稳定一阶：K=%1，T=%2 s").arg(number(model.gain), number(model.lag));
        break;
    }
    text += m_fit.delayAtMost ? QStringLiteral("，纯滞后≤%1 s").arg(number(*m_fit.delayAtMost))
                              : QStringLiteral("，纯滞后%1 s").arg(number(model.delay));
    if (run.gainsChanged && m_loop->currentIndex() == 0)
        text += QStringLiteral("（运行中增益改变过，按开始时的计算）");
    return QStringLiteral("对象模型：%1；残差%2（响应幅度的%3%）")
        .arg(text, number(m_fit.residual), number(m_fit.residualShare));
}

// ---- the suggestion

Tuning TuningPanel::tuning(const PidRun &run, QString *reason) const
{
    const auto controller = m_controller->currentIndex() == 0 ? ControllerKind::Pid : ControllerKind::Pi;
    const int rule = m_rule->currentIndex();
    const StepFigures &figures = m_figures->of(run);
    if (rule == ZieglerNichols) {
        const UltimatePoint point = ultimatePoint(figures, m_boardGains);
        *reason = ultimateProblemText(point.problem);
        return point.problem == UltimatePoint::Problem::None ? zieglerNicholsTuning(point, controller)
                                                             : Tuning();
    }
    if (m_fit.problem != PlantFit::Problem::None) {
        *reason = QStringLiteral("数据不支持给出建议");
        return {};
    }
    LoopTiming timing;
    timing.period = periodOf(run);
    timing.reportInterval = figures.reportRate.value_or(0) > 0 ? 1 / *figures.reportRate : 0;
    const double slowness = kSlowest * std::pow(kFastest / kSlowest, m_speed->value() / 100.0);
    const Tuning tuning = rule == Simc ? simcTuning(m_fit.model, controller, slowness, timing)
                                       : amigoTuning(m_fit.model, controller, timing);
    *reason = tuningProblemText(tuning.problem);
    return tuning;
}

void TuningPanel::showTuning()
{
    m_speed->setEnabled(m_rule->currentIndex() == Simc);
    m_apply->setEnabled(false);
    m_result->clear();
    const PidRun *run = m_recorder->runs()->find(m_fittedRun);
    if (!run || m_job->isRunning())
        return;
    QString reason;
    const Tuning found = tuning(*run, &reason);
    if (!reason.isEmpty()) {
        m_result->setText(reason);
        return;
    }
    const auto numbers = toBoard(found.gains, GainForm(m_form->currentIndex()), periodOf(*run));
    if (!numbers) {
        m_result->setText(QStringLiteral("这种增益形式需要周期，请让开发板上报周期"));
        return;
    }
    m_proposed = {float(numbers->p), float(numbers->i), float(numbers->d)};
    m_result->setText(QStringLiteral("建议：P=%1　I=%2　D=%3")
                          .arg(number(numbers->p), number(numbers->i), number(numbers->d)));
    const Tuning::Problem problem = fieldProblem(*numbers);
    if (problem != Tuning::Problem::None)
        m_result->setText(m_result->text() + QStringLiteral("（%1）").arg(tuningProblemText(problem)));
    m_apply->setEnabled(problem == Tuning::Problem::None);
}

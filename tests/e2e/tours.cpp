#include "tests/e2e/tours.h"

#include "tests/e2e/stage.h"

#include <QTest>

Tour::Tour() = default;
Tour::~Tour() = default;

void Tour::init()
{
    m_stage = std::make_unique<Stage>();
    QVERIFY(m_stage->isReady());
}

void Tour::cleanup()
{
    m_stage.reset();
}

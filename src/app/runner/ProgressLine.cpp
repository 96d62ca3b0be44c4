#include "app/runner/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace app
{
ProgressLine::ProgressLine(long total)
    : m_total(total)
    , m_isShown(isatty(STDERR_FILENO))
    , m_next(Clock::now() + std::chrono::seconds(1))
{
}

ProgressLine::~ProgressLine()
{
    if (m_hasPrinted)
        std::fprintf(stderr, "\r\033[K");
}

void ProgressLine::Update(long step)
{
    if (!m_isShown || Clock::now() < m_next)
        return;
    m_next = Clock::now() + std::chrono::milliseconds(200);
    m_hasPrinted = true;
    std::fprintf(stderr, "\rstep %ld of %ld", step, m_total);
    std::fflush(stderr);
}
}

// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "workbar.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

namespace
{

constexpr int patienceMilliseconds = 1000;

} // namespace

WorkBar::WorkBar(QWidget* parent) : QWidget(parent), m_bar(new QProgressBar(this))
{
    auto* stopButton = new QPushButton(QStringLiteral("Cancel"), this);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_bar);
    row->addWidget(stopButton);
    connect(stopButton, &QPushButton::clicked, this, &WorkBar::stop);
    hide();
}

WorkBar::Run::Run(WorkBar& bar) : m_bar(bar)
{
    bar.m_isRunning = true;
    bar.m_isStopped = false;
    bar.m_time.start();
}

WorkBar::Run::~Run()
{
    m_bar.m_isRunning = false;
    if (!m_bar.m_isShown)
        return;
    m_bar.m_isShown = false;
    m_bar.hide();
    Q_EMIT m_bar.shown(false);
}

std::function<bool(int, int)> WorkBar::progress()
{
    return [this](int done, int total) { return goOn(done, total); };
}

bool WorkBar::goOn(int done, int total)
{
    if (!m_isShown && m_time.elapsed() < patienceMilliseconds)
        return true;
    if (!m_isShown) {
        m_isShown = true;
        show();
        Q_EMIT shown(true);
    }
    m_bar->setMaximum(total);
    m_bar->setValue(done);
    QApplication::processEvents();
    return !m_isStopped;
}

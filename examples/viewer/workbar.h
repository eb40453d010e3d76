// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_WORKBAR_H
#define VIEWER_WORKBAR_H

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QWidget>

#include <functional>

class QProgressBar;

/// Shows how far work has come, with a button that stops it. Appears when it takes longer than a
/// second; the rest of the window is to be disabled meanwhile, since the button needs events.
class WorkBar : public QWidget
{
    Q_OBJECT

public:
    explicit WorkBar(QWidget* parent = nullptr);

    /// One piece of work, as long as it lives.
    class Run
    {
    public:
        explicit Run(WorkBar& bar);
        ~Run();
        Q_DISABLE_COPY(Run)

    private:
        WorkBar& m_bar;
    };

    /// Returns the function that the work calls; it returns false when it is to stop.
    std::function<bool(int done, int total)> progress();

    bool isRunning() const { return m_isRunning; }
    void stop() { m_isStopped = true; }

Q_SIGNALS:
    /// Says that the bar appears or goes.
    void shown(bool isShown);

private:
    bool goOn(int done, int total);

    QProgressBar* m_bar;
    QElapsedTimer m_time;
    bool m_isRunning = false;
    bool m_isShown = false;
    bool m_isStopped = false;
};

#endif

// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_INTERRUPTION_H
#define QUICKSTART_INTERRUPTION_H

#include <csignal>

/// \file
/// Ctrl-C as a question that long work asks, so that it can clean up after itself.

namespace interruption
{

/// A signal handler may touch nothing but an object of this type.
inline volatile std::sig_atomic_t requested = 0;

inline void request(int signalNumber)
{
    requested = 1;
    // A program that does not ask in time must still end: a second Ctrl-C is not caught.
    static_cast<void>(std::signal(signalNumber, SIG_DFL));
}

/// Leaves a signal alone that this program was started to ignore, as in the background of a script.
inline void catchSignal(int signalNumber)
{
    if (std::signal(signalNumber, request) == SIG_IGN)
        static_cast<void>(std::signal(signalNumber, SIG_IGN));
}

} // namespace interruption

/// Makes Ctrl-C, and a request to terminate, set a mark instead of ending the program.
inline void catchInterruption()
{
    interruption::catchSignal(SIGINT);
    interruption::catchSignal(SIGTERM);
}

/// Returns whether that mark is set.
inline bool isInterrupted()
{
    return interruption::requested != 0;
}

#endif

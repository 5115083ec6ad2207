#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

namespace lumivane::test {

// Lets queued events run until `done` holds or the time is up; answers whether it held.
template <class Done>
bool WaitUntil(Done done, int ms = 5000) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > ms) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }
  return true;
}

}  // namespace lumivane::test

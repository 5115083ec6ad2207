#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>

#include <stdexcept>

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

// The child of `parent` named `name`; a missing one ends the test with its name.
template <class W>
W* Child(const QObject& parent, const char* name) {
  W* w = parent.findChild<W*>(QString::fromLatin1(name));
  if (w == nullptr) throw std::runtime_error(name);
  return w;
}

// Closes a window whose work may still run on the pool (thumbnails, previews) and lets the
// events it left behind run.
template <class Window>
void CloseWindow(Window& window) {
  window.reset();
  QThreadPool::globalInstance()->waitForDone();
  QCoreApplication::processEvents();
}

}  // namespace lumivane::test

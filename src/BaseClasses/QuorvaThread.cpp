#include "BaseClasses/QuorvaThread.h"

#include <chrono>

QuorvaThread::~QuorvaThread() {
  if (_threadHandle.joinable()) {
    _threadHandle.detach();
  }
}

void QuorvaThread::Start() {
  std::thread started(_threadFunc, _threadData);
  if (_threadHandle.joinable()) {
    _threadHandle.detach();
  }
  _threadHandle = std::move(started);
}

void QuorvaThread::WaitUntilDone() {
  if (_threadHandle.joinable()) {
    _threadHandle.join();
  }
}

void QuorvaThread::Sleep(int ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

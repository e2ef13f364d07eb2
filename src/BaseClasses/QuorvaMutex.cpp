#include "BaseClasses/QuorvaMutex.h"

#include <cstdio>

#ifdef _WIN32
#include "BaseClasses/WindowsHandles.h"
#endif

QuorvaMutex::QuorvaMutex() {
  ++_globalID;
  std::snprintf(_name, sizeof _name, "mutex%d", _globalID);
#ifdef _WIN32
  // On purpose without the name: another process may have one of the same name.
  _mutex = support::requireHandle(CreateMutexA(nullptr, FALSE, nullptr), "CreateMutexA");
#endif
}

#ifdef _WIN32

QuorvaMutex::~QuorvaMutex() {
  CloseHandle(_mutex);
}

void QuorvaMutex::Get() {
  WaitForSingleObject(_mutex, INFINITE);
}

void QuorvaMutex::Release() {
  ReleaseMutex(_mutex);
}

#else

void QuorvaMutex::Get() {
  _mutex.lock();
}

void QuorvaMutex::Release() {
  _mutex.unlock();
}

#endif

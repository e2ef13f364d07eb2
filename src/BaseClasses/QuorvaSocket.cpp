#include "BaseClasses/QuorvaSocket.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>

#include "BaseClasses/QuorvaThread.h"

#ifdef _WIN32
#include <winsock2.h>
#else
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

constexpr std::int32_t kNoSocket = -1;
constexpr int kShutBothDown = 2;
/// A connection that has ended gives 0 at once, each time: whoever receives from it all the same pauses in between, so
/// that the wait costs next to no processor time.
constexpr int kPauseWithoutDataMs = 100;

#ifdef _WIN32
/// Winsock's handles are small numbers, whatever the width of their type.
SOCKET handleOf(std::int32_t descriptor) {
  return static_cast<SOCKET>(descriptor);
}
void closeDescriptor(std::int32_t descriptor) {
  closesocket(handleOf(descriptor));
}
/// Number of the last failure of a socket call; Winsock leaves errno alone.
int lastFailure() {
  return WSAGetLastError();
}
/// True if a connection that receives nothing any more was broken off, and not ended in order. Windows has each receive
/// fail then; under Wine a select uses the failure up, and only a send, if of nothing, still meets it.
bool isBrokenOff(std::int32_t descriptor) {
  return send(handleOf(descriptor), "", 0, 0) == -1;
}
constexpr int kSendFlags = 0;
using AddressLength = int;
using DataLength = int;
#else
int handleOf(std::int32_t descriptor) {
  return descriptor;
}
void closeDescriptor(std::int32_t descriptor) {
  close(descriptor);
}
int lastFailure() {
  return errno;
}
#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;
#endif
using AddressLength = socklen_t;
using DataLength = std::size_t;
#endif

/// Takes a system call up again for as long as a signal interrupts it.
template <typename Call>
auto untilNotInterrupted(Call call) {
  auto result = call();
#ifndef _WIN32
  while (result == -1 && lastFailure() == EINTR) {
    result = call();
  }
#endif
  return result;
}

/// Makes a write to a closed connection fail without SIGPIPE where the socket has the flag for it, and not the call.
void silenceBrokenPipe([[maybe_unused]] std::int32_t descriptor) {
#if !defined(_WIN32) && !defined(MSG_NOSIGNAL) && defined(SO_NOSIGPIPE)
  const int on = 1;
  setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

/// Whoever looks for a free port meets this failure all the time. EADDRINUSE is 98 on Linux and 48 on BSD.
bool isAddressInUse(int failure) {
#ifdef _WIN32
  return failure == WSAEADDRINUSE;
#else
  return failure == 98 || failure == 48;
#endif
}

sockaddr_in addressAt(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  return address;
}

/// Result of a connect call, also of one that a signal interrupted: that one goes on in the background.
int connectTo(std::int32_t descriptor, const sockaddr_in& address) {
  const int result = connect(handleOf(descriptor), reinterpret_cast<const sockaddr*>(&address),
                             static_cast<AddressLength>(sizeof address));
#ifndef _WIN32
  if (result == -1 && lastFailure() == EINTR) {
    pollfd waiting{descriptor, POLLOUT, 0};
    if (untilNotInterrupted([&] { return poll(&waiting, 1, -1); }) == -1) {
      return -1;
    }
    int failure = 0;
    socklen_t length = sizeof failure;
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &failure, &length) == -1) {
      return -1;
    }
    errno = failure;
    return failure == 0 ? 0 : -1;
  }
#endif
  return result;
}

/// One wait of select on the read set of `descriptor`: above 0 if readable, 0 if not in time, -1 on failure.
int selectOnce(std::int32_t descriptor, timeval wait) {
#ifndef _WIN32
  // The set has no place for other descriptors: putting one in would write beside it.
  if (descriptor < 0 || descriptor >= FD_SETSIZE) {
    errno = EBADF;
    return -1;
  }
#endif
  fd_set readable;
  FD_ZERO(&readable);
  FD_SET(handleOf(descriptor), &readable);
  const int ready = select(descriptor + 1, &readable, nullptr, nullptr, &wait);
  if (ready > 0 && !FD_ISSET(handleOf(descriptor), &readable)) {
    return 0;
  }
  return ready;
}

timeval waitOf(int delay_ms) {
  const int seconds = static_cast<int>(delay_ms / 1000.0);
  timeval wait{};
  wait.tv_sec = seconds;
  wait.tv_usec = (delay_ms - seconds * 1000) * 1000;
  return wait;
}

}  // namespace

QuorvaSocket::QuorvaSocket(bool create) {
  InitializeSocketLibrary();
  if (!create) {
    return;
  }
  _socket = static_cast<std::int32_t>(socket(AF_INET, SOCK_STREAM, 0));
  if (_socket == kNoSocket) {
    ErrorString = "error in socket creation";
    std::cerr << ErrorString << std::endl;
    return;
  }
  silenceBrokenPipe(_socket);
}

QuorvaSocket::~QuorvaSocket() {
  Close();
}

bool QuorvaSocket::Accept(QuorvaSocket& client) {
  const auto accepted =
      static_cast<std::int32_t>(untilNotInterrupted([this] { return accept(handleOf(_socket), nullptr, nullptr); }));
  client.Close();
  client._socket = accepted;
  if (accepted == kNoSocket) {
    ErrorString = "error in accept: ";
    std::cerr << ErrorString << std::endl;
    return false;
  }
  silenceBrokenPipe(accepted);
  return true;
}

bool QuorvaSocket::Bind(int port) {
  const sockaddr_in address = addressAt(port);
  if (bind(handleOf(_socket), reinterpret_cast<const sockaddr*>(&address),
           static_cast<AddressLength>(sizeof address)) == 0) {
    return true;
  }
  const int failure = lastFailure();
  if (!isAddressInUse(failure)) {
    ErrorString = "error in bind.  errno=";
    std::cerr << ErrorString << failure << " (Port=" << port << ")" << std::endl;
  }
  return false;
}

void QuorvaSocket::Close() {
  if (_socket == kNoSocket) {
    return;
  }
  if (shutdown(handleOf(_socket), kShutBothDown) != 0) {
    const int failure = lastFailure();
    ErrorString = "error in shutdown.  errno=";
    std::cerr << ErrorString << failure << std::endl;
  }
  closeDescriptor(_socket);
  _socket = kNoSocket;
}

bool QuorvaSocket::Connect(const char* host, int port) {
  sockaddr_in address = addressAt(port);
  const hostent* const found = gethostbyname(host);
  int failure = EHOSTUNREACH;
  if (found != nullptr && found->h_addrtype == AF_INET && found->h_addr_list[0] != nullptr) {
    std::memcpy(&address.sin_addr, found->h_addr_list[0], sizeof address.sin_addr);
    if (connectTo(_socket, address) == 0) {
      return true;
    }
    failure = lastFailure();
  }
  ErrorString = "error in connect: errno=";
  std::cerr << ErrorString << failure << std::endl;
  return false;
}

bool QuorvaSocket::Listen(int backlog) {
  if (listen(handleOf(_socket), backlog) == 0) {
    return true;
  }
  const int failure = lastFailure();
  ErrorString = "error in listen";
  std::cerr << ErrorString << failure << std::endl;
  return false;
}

int QuorvaSocket::Recv(char* buffer, int length) {
  const auto count = static_cast<int>(
      untilNotInterrupted([&] { return recv(handleOf(_socket), buffer, static_cast<DataLength>(length), 0); }));
#ifdef _WIN32
  if (count == 0 && isBrokenOff(_socket)) {
    return -1;
  }
#endif
  return count;
}

int QuorvaSocket::RecvBlock(char* buffer, int length) {
  int received = 0;
  while (received < length) {
    const int count = Recv(buffer + received, length - received);
    if (count == -1) {
      break;
    }
    if (count == 0) {
      QuorvaThread::Sleep(kPauseWithoutDataMs);
    }
    received += count;
  }
  return received;
}

int QuorvaSocket::RecvBlock(char* buffer, int length, const char* terminator) {
  const auto terminatorLength = static_cast<int>(std::strlen(terminator));
  int received = 0;
  while (received < length) {
    // One byte at a time: a receive that went beyond the terminator would not see the end of the text any more, and
    // would swallow what the other side says next.
    const int count = Recv(buffer + received, 1);
    if (count > 0) {
      received += count;
    } else {
      QuorvaThread::Sleep(kPauseWithoutDataMs);
    }
    buffer[received] = '\0';
    if (received >= terminatorLength && std::strcmp(buffer + received - terminatorLength, terminator) == 0) {
      break;
    }
  }
  return received;
}

int QuorvaSocket::Send(const char* buffer, int length) {
  return static_cast<int>(untilNotInterrupted(
      [&] { return send(handleOf(_socket), buffer, static_cast<DataLength>(length), kSendFlags); }));
}

bool QuorvaSocket::Select(int delay_ms) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(delay_ms);
  int remaining_ms = delay_ms;
  int ready = selectOnce(_socket, waitOf(remaining_ms));
  while (ready == -1 && lastFailure() == EINTR) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    remaining_ms = left > 0 ? static_cast<int>(left) : 0;
    ready = selectOnce(_socket, waitOf(remaining_ms));
  }
  if (ready == -1) {
    const int failure = lastFailure();
    ErrorString = "error in select";
    std::cerr << ErrorString << failure << std::endl;
    return false;
  }
  return ready > 0;
}

bool QuorvaSocket::InitializeSocketLibrary() {
#ifdef _WIN32
  static bool isInitialized = false;
  if (isInitialized) {
    return true;
  }
  isInitialized = true;

  constexpr WORD kVersion = 257;  // 1.1
  WSADATA library;
  const int failure = WSAStartup(kVersion, &library);
  if (failure != 0) {
    ErrorString = "Failure in enabling socket library: error= ";
    std::cerr << ErrorString << failure << std::endl;
    return false;
  }
  const int major = LOBYTE(library.wVersion);
  const int minor = HIBYTE(library.wVersion);
  if (major != 1 || minor != 1) {
    WSACleanup();
    ErrorString = "Requested bad version of WinSock";
    std::cerr << ErrorString << std::endl;
    std::cerr << "Request for version " << 1 << "." << 1 << " failed."
              << "Received version " << major << "." << minor << " instead." << std::endl;
    return false;
  }
#endif
  return true;
}

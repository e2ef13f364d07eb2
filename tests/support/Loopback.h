#pragma once

#include <cstdint>
#include <memory>

#include "BaseClasses/QuorvaSocket.h"

namespace support {

/// A socket with its descriptor in sight.
class SocketProbe : public QuorvaSocket {
 public:
  using QuorvaSocket::_socket;
  using QuorvaSocket::ErrorString;
  using QuorvaSocket::QuorvaSocket;

  /// The same of a socket that is no probe, such as one that its owner deletes as what it is.
  static std::int32_t& descriptorOf(QuorvaSocket& socket) { return socket.*(&SocketProbe::_socket); }
  static const char*& errorStringOf(QuorvaSocket& socket) { return socket.*(&SocketProbe::ErrorString); }
};

/// Binds `socket` to a free port and gives it; different processes begin to look in different places.
inline int bindToFreePort(QuorvaSocket& socket, int processId) {
  int port = 20000 + processId % 10000;
  while (!socket.Bind(port)) {
    ++port;
  }
  return port;
}

/// Two connected sockets on this machine.
struct Loopback {
  explicit Loopback(int processId) {
    const int port = bindToFreePort(listener, processId);
    isConnected = listener.Listen(5) && client.Connect("127.0.0.1", port) && listener.Accept(server);
  }

  SocketProbe listener{true};
  SocketProbe client{true};
  SocketProbe server{false};
  bool isConnected = false;
};

}  // namespace support

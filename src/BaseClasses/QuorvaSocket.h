#pragma once

#include <cstdint>

/// A TCP stream socket over IPv4, listening or connected.
///
/// A failure shows in three ways: the bool or the count returned, a line on standard error, and GetErrorString, which
/// keeps the text of the object's last failure for the rest of its life. RecvBlock, Recv and Send tell of a failure by
/// their counts alone.
/// Owns     the descriptor, from creation or Accept until Close.
/// Signals  a call that a signal interrupts is taken up again; a write to a connection that the other side has closed
///          gives -1 and raises no signal.
/// Threads  takes no lock of its own.
class QuorvaSocket {
 public:
  /// With `create` makes a stream socket; without it there is no descriptor until Accept of another socket stores one.
  explicit QuorvaSocket(bool create);
  QuorvaSocket(const QuorvaSocket&) = delete;
  QuorvaSocket& operator=(const QuorvaSocket&) = delete;
  ~QuorvaSocket();

  /// Waits for one connection and stores it in `client`: -1 if the call failed. A connection that `client` held before
  /// is closed.
  [[nodiscard]] bool Accept(QuorvaSocket& client);
  /// Binds to `port` on any local address; the low 16 bits of `port` count. A port in use gives false quietly.
  [[nodiscard]] bool Bind(int port);
  /// Shuts both directions down and gives the descriptor back; does nothing when there is none.
  void Close();
  /// Connects to the first IPv4 address of `host`. A name that has no address fails like an unreachable host.
  [[nodiscard]] bool Connect(const char* host, int port);
  /// Lets up to `backlog` connections wait for Accept.
  bool Listen(int backlog);

  /// One receive call: the bytes received, 0 when the other side has closed, -1 on failure.
  [[nodiscard]] int Recv(char* buffer, int length);
  /// Receives until `length` bytes have come or a receive gives -1; returns the bytes received.
  /// On purpose: a receive that gives 0 does not end the wait, so that the call does not return after the other side
  /// has closed its end in good order. The wait uses next to no processor time.
  [[nodiscard]] int RecvBlock(char* buffer, int length);
  /// Receives until the bytes received end in `terminator` or `length` bytes have come; returns the bytes received.
  /// `buffer` has room for `length` + 1 bytes: a zero byte follows the data. Nothing behind the terminator is taken off
  /// the connection.
  /// On purpose: a receive that gives 0 or less does not end the wait, which uses next to no processor time.
  [[nodiscard]] int RecvBlock(char* buffer, int length, const char* terminator);
  /// One send call: the bytes taken, -1 on failure. A short send is not continued.
  [[nodiscard]] int Send(const char* buffer, int length);
  /// Waits up to `delay_ms` milliseconds for something to read or to accept; 0 polls.
  [[nodiscard]] bool Select(int delay_ms);

  /// Text of the last failure, null if there was none; a constant, never freed.
  [[nodiscard]] const char* GetErrorString() const { return ErrorString; }

 protected:
  std::int32_t _socket = -1;          // owned descriptor; -1 while there is none
  const char* ErrorString = nullptr;  // borrowed: a constant

 private:
  bool InitializeSocketLibrary();
};

#include "BaseClasses/QuorvaSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "support/CapturedOutput.h"
#include "support/Loopback.h"

namespace {

using support::SocketProbe;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

milliseconds since(Clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

class QuorvaSocketTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(pair.isConnected); }

  support::Loopback pair{support::processId()};
};

/// Interrupts the thread that made it, again and again, with a signal whose handler does nothing.
class Interrupter {
 public:
  Interrupter() {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // no SA_RESTART: calls come back with EINTR
    sigaction(SIGUSR1, &action, &before_);
    thread_ = std::thread([this, target = pthread_self()] {
      while (!isDone_) {
        std::this_thread::sleep_for(milliseconds(5));
        pthread_kill(target, SIGUSR1);
      }
    });
  }
  Interrupter(const Interrupter&) = delete;
  Interrupter& operator=(const Interrupter&) = delete;
  ~Interrupter() {
    isDone_ = true;
    thread_.join();
    sigaction(SIGUSR1, &before_, nullptr);
  }

 private:
  struct sigaction before_ {};
  std::atomic<bool> isDone_ = false;
  std::thread thread_;
};

// ---- Life of a descriptor -------------------------------------------------------------------------------------------

TEST(QuorvaSocketLifeTest, WithoutCreationThereIsNoDescriptorAndCloseDoesNothing) {
  const std::string err = support::standardErrorOf([] {
    SocketProbe socket(false);
    EXPECT_EQ(socket._socket, -1);
    socket.Close();
    EXPECT_EQ(socket.GetErrorString(), nullptr);
  });
  EXPECT_EQ(err, "");
}

TEST(QuorvaSocketLifeTest, CreationMakesAnIPv4StreamSocket) {
  SocketProbe socket(true);
  ASSERT_GE(socket._socket, 0);
  int type = 0;
  socklen_t length = sizeof type;
  ASSERT_EQ(getsockopt(socket._socket, SOL_SOCKET, SO_TYPE, &type, &length), 0);
  EXPECT_EQ(type, SOCK_STREAM);
  int domain = 0;
  length = sizeof domain;
  ASSERT_EQ(getsockopt(socket._socket, SOL_SOCKET, SO_DOMAIN, &domain, &length), 0);
  EXPECT_EQ(domain, AF_INET);
  EXPECT_EQ(socket.GetErrorString(), nullptr);
}

TEST(QuorvaSocketLifeTest, AFailedCreationIsToldAndLeavesNoDescriptor) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const std::string err = support::standardErrorOf([&] {
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const SocketProbe socket(true);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(socket._socket, -1);
    EXPECT_STREQ(socket.GetErrorString(), "error in socket creation");
  });
  EXPECT_EQ(err, "error in socket creation\n");
}

TEST(QuorvaSocketLifeTest, ClosingAnUnconnectedSocketTellsOfTheShutdownAndClosesAllTheSame) {
  SocketProbe socket(true);
  const int descriptor = socket._socket;
  const std::string err = support::standardErrorOf([&] {
    socket.Close();
    socket.Close();  // the second does nothing
  });
  EXPECT_EQ(err, "error in shutdown.  errno=" + std::to_string(ENOTCONN) + "\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in shutdown.  errno=");
  EXPECT_EQ(socket._socket, -1);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(QuorvaSocketTest, ClosingAConnectedSocketIsQuiet) {
  const std::string err = support::standardErrorOf([&] { pair.server.Close(); });
  EXPECT_EQ(err, "");
  EXPECT_EQ(pair.server._socket, -1);
  EXPECT_EQ(pair.server.GetErrorString(), nullptr);
}

// ---- Binding and connecting -----------------------------------------------------------------------------------------

TEST_F(QuorvaSocketTest, BindingToAPortInUseFailsQuietly) {
  SocketProbe first(true);
  const int port = support::bindToFreePort(first, support::processId());
  SocketProbe second(true);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(second.Bind(port)); });
  EXPECT_EQ(err, "");
  EXPECT_EQ(second.GetErrorString(), nullptr);
}

TEST(QuorvaSocketFailureTest, BindingWithoutADescriptorNamesErrnoAndPort) {
  SocketProbe socket(false);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Bind(12345)); });
  EXPECT_EQ(err, "error in bind.  errno=" + std::to_string(EBADF) + " (Port=12345)\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in bind.  errno=");
}

TEST(QuorvaSocketFailureTest, ListeningWithoutADescriptorNamesErrno) {
  SocketProbe socket(false);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Listen(5)); });
  EXPECT_EQ(err, "error in listen" + std::to_string(EBADF) + "\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in listen");
}

TEST(QuorvaSocketFailureTest, AFailedAcceptLeavesTheClientWithoutADescriptor) {
  SocketProbe socket(false);
  SocketProbe client(false);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Accept(client)); });
  EXPECT_EQ(err, "error in accept: \n");
  EXPECT_STREQ(socket.GetErrorString(), "error in accept: ");
  EXPECT_EQ(client._socket, -1);
  EXPECT_EQ(client.GetErrorString(), nullptr);
}

TEST_F(QuorvaSocketTest, AcceptClosesTheConnectionThatTheClientHeldBefore) {
  SocketProbe failing(false);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(failing.Accept(pair.server)); });
  EXPECT_EQ(err, "error in accept: \n");
  EXPECT_EQ(pair.server._socket, -1);
  char byte = 0;
  EXPECT_EQ(pair.client.Recv(&byte, 1), 0);  // the other side has closed
}

TEST(QuorvaSocketFailureTest, ConnectingWhereNobodyListensNamesErrno) {
  SocketProbe closed(true);
  const int port = support::bindToFreePort(closed, support::processId());  // bound, not listening
  SocketProbe socket(true);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Connect("127.0.0.1", port)); });
  EXPECT_EQ(err, "error in connect: errno=" + std::to_string(ECONNREFUSED) + "\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in connect: errno=");
}

// A line of no length holds one connection that nobody has taken; the next one is not answered before there is room.
TEST(QuorvaSocketConnectTest, SignalsDoNotEndAConnect) {
  SocketProbe listener(true);
  const int port = support::bindToFreePort(listener, support::processId());
  ASSERT_TRUE(listener.Listen(0));
  SocketProbe first(true);
  ASSERT_TRUE(first.Connect("127.0.0.1", port));
  std::thread taker([&] {
    std::this_thread::sleep_for(milliseconds(100));
    for (int i = 0; i < 2; ++i) {
      SocketProbe taken(false);
      EXPECT_TRUE(listener.Accept(taken));
    }
  });
  {
    const Interrupter interrupter;
    SocketProbe second(true);
    EXPECT_TRUE(second.Connect("127.0.0.1", port));
    EXPECT_EQ(second.GetErrorString(), nullptr);
    taker.join();
  }
}

TEST(QuorvaSocketFailureTest, ANameWithoutAnAddressFailsLikeAnUnreachableHost) {
  SocketProbe socket(true);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Connect("", 1)); });
  EXPECT_EQ(err, "error in connect: errno=" + std::to_string(EHOSTUNREACH) + "\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in connect: errno=");
}

TEST_F(QuorvaSocketTest, AnErrorTextStaysForTheObjectsLife) {
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(pair.client.Connect("127.0.0.1", 1)); });
  EXPECT_EQ(err, "error in connect: errno=" + std::to_string(EISCONN) + "\n");
  ASSERT_EQ(pair.client.Send("x", 1), 1);
  ASSERT_TRUE(pair.server.Select(2000));
  EXPECT_FALSE(pair.client.Select(0));
  EXPECT_STREQ(pair.client.GetErrorString(), "error in connect: errno=");
}

// ---- Waiting --------------------------------------------------------------------------------------------------------

TEST_F(QuorvaSocketTest, SelectOfZeroPolls) {
  const auto start = Clock::now();
  EXPECT_FALSE(pair.server.Select(0));
  EXPECT_LT(since(start), milliseconds(500));
  ASSERT_EQ(pair.client.Send("x", 1), 1);
  EXPECT_TRUE(pair.server.Select(2000));
  EXPECT_TRUE(pair.server.Select(0));  // nothing has been read yet
}

TEST_F(QuorvaSocketTest, SelectWaitsForTheWholeTimeWhenNothingComes) {
  for (const int delay : {250, 1050}) {  // below and above a whole second
    const auto start = Clock::now();
    EXPECT_FALSE(pair.server.Select(delay));
    EXPECT_GE(since(start), milliseconds(delay));
    EXPECT_LT(since(start), milliseconds(delay + 900));
  }
  EXPECT_EQ(pair.server.GetErrorString(), nullptr);
}

TEST_F(QuorvaSocketTest, SelectReturnsAsSoonAsSomethingComes) {
  std::thread sender([this] {
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(pair.client.Send("x", 1), 1);
  });
  const auto start = Clock::now();
  EXPECT_TRUE(pair.server.Select(20000));
  EXPECT_LT(since(start), milliseconds(10000));
  sender.join();
}

TEST_F(QuorvaSocketTest, AListeningSocketIsReadableWhenAConnectionWaits) {
  EXPECT_FALSE(pair.listener.Select(0));
  SocketProbe another(true);
  sockaddr address{};
  socklen_t length = sizeof address;
  ASSERT_EQ(getsockname(pair.listener._socket, &address, &length), 0);
  ASSERT_EQ(connect(another._socket, &address, length), 0);
  EXPECT_TRUE(pair.listener.Select(2000));
}

TEST(QuorvaSocketFailureTest, SelectWithoutADescriptorNamesErrno) {
  SocketProbe socket(false);
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(socket.Select(0)); });
  EXPECT_EQ(err, "error in select" + std::to_string(EBADF) + "\n");
  EXPECT_STREQ(socket.GetErrorString(), "error in select");
}

TEST_F(QuorvaSocketTest, SelectRefusesADescriptorThatItsSetHasNoPlaceFor) {
  SocketProbe high(false);
  high._socket = fcntl(pair.server._socket, F_DUPFD, FD_SETSIZE);
  if (high._socket == -1) {
    GTEST_SKIP() << "the process may not have as many descriptors";
  }
  const std::string err = support::standardErrorOf([&] { EXPECT_FALSE(high.Select(0)); });
  EXPECT_EQ(err, "error in select" + std::to_string(EBADF) + "\n");
}

TEST_F(QuorvaSocketTest, SelectOfANegativeDelayFails) {
  const std::string err = support::standardErrorOf([this] { EXPECT_FALSE(pair.server.Select(-1)); });
  EXPECT_EQ(err, "error in select" + std::to_string(EINVAL) + "\n");
}

TEST_F(QuorvaSocketTest, SignalsNeitherShortenNorEndAWait) {
  const Interrupter interrupter;
  const auto start = Clock::now();
  EXPECT_FALSE(pair.server.Select(200));
  EXPECT_GE(since(start), milliseconds(200));
  EXPECT_EQ(pair.server.GetErrorString(), nullptr);

  std::thread sender([this] {
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_EQ(pair.client.Send("abc", 3), 3);
  });
  std::array<char, 3> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 3), 3);
  EXPECT_EQ(std::string(data.data(), 3), "abc");
  sender.join();
}

// ---- Data -----------------------------------------------------------------------------------------------------------

TEST_F(QuorvaSocketTest, RecvGivesWhatOneCallBrings) {
  ASSERT_EQ(pair.client.Send("abcdef", 6), 6);
  std::array<char, 16> data{};
  ASSERT_TRUE(pair.server.Select(2000));
  EXPECT_EQ(pair.server.Recv(data.data(), 4), 4);
  EXPECT_EQ(pair.server.Recv(data.data() + 4, 12), 2);
  EXPECT_EQ(std::string(data.data()), "abcdef");
  pair.client.Close();
  EXPECT_EQ(pair.server.Recv(data.data(), 16), 0);
}

TEST_F(QuorvaSocketTest, RecvBlockWaitsForAllBytes) {
  std::thread sender([this] {
    for (const char* piece : {"ab", "cde", "f"}) {
      EXPECT_GT(pair.client.Send(piece, static_cast<int>(std::string(piece).size())), 0);
      std::this_thread::sleep_for(milliseconds(20));
    }
  });
  std::array<char, 7> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 6), 6);
  EXPECT_STREQ(data.data(), "abcdef");
  sender.join();
}

TEST_F(QuorvaSocketTest, RecvBlockGivesTheCountSoFarWhenAReceiveFails) {
  ASSERT_EQ(pair.client.Send("ab", 2), 2);
  ASSERT_TRUE(pair.server.Select(2000));
  ASSERT_EQ(fcntl(pair.server._socket, F_SETFL, O_NONBLOCK), 0);  // an empty connection now fails with EAGAIN
  std::array<char, 5> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 4), 2);
  EXPECT_STREQ(data.data(), "ab");
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 4), 0);
  EXPECT_EQ(pair.server.GetErrorString(), nullptr);  // tells of a failure by its count alone
}

TEST_F(QuorvaSocketTest, RecvBlockOfNothingReceivesNothing) {
  char untouched = 'u';
  EXPECT_EQ(pair.server.RecvBlock(&untouched, 0), 0);
  EXPECT_EQ(untouched, 'u');
}

TEST_F(QuorvaSocketTest, ATerminatorEndsTheBlockEvenWhenItComesInTwoPieces) {
  std::thread sender([this] {
    EXPECT_EQ(pair.client.Send("file;10;", 8), 8);
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(pair.client.Send(";", 1), 1);
  });
  std::array<char, 33> data{};
  data.fill('x');
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 32, ";;"), 9);
  EXPECT_STREQ(data.data(), "file;10;;");
  EXPECT_EQ(data[10], 'x');
  sender.join();
}

TEST_F(QuorvaSocketTest, WhatFollowsTheTerminatorStaysOnTheConnection) {
  ASSERT_EQ(pair.client.Send("f;;\2", 4), 4);
  std::array<char, 33> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 32, ";;"), 3);
  EXPECT_STREQ(data.data(), "f;;");
  char next = 0;
  EXPECT_EQ(pair.server.RecvBlock(&next, 1), 1);
  EXPECT_EQ(next, 2);
}

TEST_F(QuorvaSocketTest, ATextWithoutTerminatorEndsAtTheLengthWithAZeroByteBehind) {
  ASSERT_EQ(pair.client.Send("abcdefgh", 8), 8);
  std::array<char, 7> data{};
  data.fill('x');
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 5, ";;"), 5);
  EXPECT_EQ(std::string(data.data(), 7), std::string("abcde\0x", 7));
}

TEST_F(QuorvaSocketTest, ATextMayBeTheTerminatorAlone) {
  ASSERT_EQ(pair.client.Send(";;", 2), 2);
  std::array<char, 33> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 32, ";;"), 2);
  EXPECT_STREQ(data.data(), ";;");
}

TEST_F(QuorvaSocketTest, AReceiveThatFailsDoesNotEndTheWaitForATerminator) {
  ASSERT_EQ(fcntl(pair.server._socket, F_SETFL, O_NONBLOCK), 0);  // an empty connection fails with EAGAIN
  std::thread sender([this] {
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(pair.client.Send("f;", 2), 2);
    std::this_thread::sleep_for(milliseconds(150));
    EXPECT_EQ(pair.client.Send(";", 1), 1);
  });
  std::array<char, 33> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 32, ";;"), 3);
  EXPECT_STREQ(data.data(), "f;;");
  sender.join();
}

TEST_F(QuorvaSocketTest, AWriteToAClosedConnectionFailsWithoutEndingTheProcess) {
  ASSERT_EQ(pair.client.Send("x", 1), 1);
  ASSERT_TRUE(pair.server.Select(2000));
  pair.server.Close();  // with a byte unread: the connection is reset
  int result = 1;
  for (int i = 0; i < 100 && result == 1; ++i) {
    std::this_thread::sleep_for(milliseconds(1));
    result = pair.client.Send("y", 1);
  }
  EXPECT_EQ(result, -1);
  EXPECT_EQ(pair.client.GetErrorString(), nullptr);
}

// ---- Connections that have ended
// --------------------------------------------------------------------------------------

/// Processor time of the calling thread so far.
milliseconds threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::duration_cast<milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                  std::chrono::nanoseconds(time.tv_nsec));
}

/// Lets `receive` wait for half a second on a connection that has ended, then for `successor` to take the place of the
/// connection. Gives the processor time that the wait took.
template <typename Receive>
milliseconds timeOfAWaitWithoutEnd(SocketProbe& socket, int successor, Receive receive) {
  std::atomic<bool> isBack = false;
  milliseconds used{};
  std::thread receiver([&] {
    const milliseconds before = threadTime();
    receive();
    used = threadTime() - before;
    isBack = true;
  });
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_FALSE(isBack);
  dup2(successor, socket._socket);
  receiver.join();
  return used;
}

TEST_F(QuorvaSocketTest, RecvBlockWaitsOnAClosedConnectionWithoutUsingTheProcessor) {
  pair.client.Close();
  std::array<int, 2> pipeEnds{};
  ASSERT_EQ(pipe(pipeEnds.data()), 0);  // a receive from a pipe fails
  int received = -1;
  char byte = 0;
  const milliseconds used =
      timeOfAWaitWithoutEnd(pair.server, pipeEnds[0], [&] { received = pair.server.RecvBlock(&byte, 1); });
  EXPECT_EQ(received, 0);
  EXPECT_LT(used, milliseconds(50));
  close(pipeEnds[0]);
  close(pipeEnds[1]);
}

TEST_F(QuorvaSocketTest, RecvBlockWaitsForATerminatorOnAClosedConnectionWithoutUsingTheProcessor) {
  ASSERT_EQ(pair.client.Send("ab", 2), 2);
  pair.client.Close();
  support::Loopback other(support::processId());
  ASSERT_TRUE(other.isConnected);
  ASSERT_EQ(other.client.Send("c;;", 3), 3);
  std::array<char, 9> data{};
  int received = -1;
  const milliseconds used = timeOfAWaitWithoutEnd(pair.server, other.server._socket,
                                                  [&] { received = pair.server.RecvBlock(data.data(), 8, ";;"); });
  EXPECT_EQ(received, 5);
  EXPECT_STREQ(data.data(), "abc;;");
  EXPECT_LT(used, milliseconds(50));
}

// ---- Sends that take a part
// -------------------------------------------------------------------------------------------

/// Far beyond what the buffers of a connection hold.
const std::vector<char> kTooMuch(32 << 20, 'x');

TEST_F(QuorvaSocketTest, AShortSendIsNotContinued) {
  const int size = 1;  // the system makes it its least
  ASSERT_EQ(setsockopt(pair.client._socket, SOL_SOCKET, SO_SNDBUF, &size, sizeof size), 0);
  ASSERT_EQ(fcntl(pair.client._socket, F_SETFL, O_NONBLOCK), 0);
  const int taken = pair.client.Send(kTooMuch.data(), static_cast<int>(kTooMuch.size()));
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, static_cast<int>(kTooMuch.size()));
  std::vector<char> data(static_cast<std::size_t>(taken));
  EXPECT_EQ(pair.server.RecvBlock(data.data(), taken), taken);
  EXPECT_FALSE(pair.server.Select(50));  // nothing behind it
  EXPECT_EQ(pair.client.GetErrorString(), nullptr);
}

TEST_F(QuorvaSocketTest, AnInterruptedSendGivesWhatWasTaken) {
  std::int64_t received = 0;
  std::thread reader([&] {
    std::vector<char> data(1 << 16);
    std::this_thread::sleep_for(milliseconds(100));
    while (const int count = pair.server.Recv(data.data(), static_cast<int>(data.size()))) {
      ASSERT_GT(count, 0);
      received += count;
    }
  });
  int taken = 0;
  {
    const Interrupter interrupter;
    taken = pair.client.Send(kTooMuch.data(), static_cast<int>(kTooMuch.size()));
  }
  shutdown(pair.client._socket, SHUT_WR);
  reader.join();
  EXPECT_GT(taken, 0);
  EXPECT_EQ(received, taken);
}

TEST_F(QuorvaSocketTest, AByteAtATimeFillsABlockInterruptedOrNot) {
  const Interrupter interrupter;
  const std::string text = "alone.bin;250;;";
  std::thread sender([&] {
    for (const char& byte : text) {
      EXPECT_EQ(pair.client.Send(&byte, 1), 1);
      std::this_thread::sleep_for(milliseconds(7));
    }
  });
  std::array<char, 513> data{};
  EXPECT_EQ(pair.server.RecvBlock(data.data(), 512, ";;"), static_cast<int>(text.size()));
  EXPECT_EQ(std::string(data.data()), text);
  sender.join();
}

}  // namespace

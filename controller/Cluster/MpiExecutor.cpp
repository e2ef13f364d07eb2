#include "Cluster/MpiExecutor.h"

#include <mpi.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "Cluster/RunMessage.h"
#include "Process/LocalExecutor.h"
#include "Process/SignalPipe.h"

namespace controller {
namespace {

enum Tag { kStart = 1, kCancel, kEnd, kFinished, kEnded };

// A wait inside MPI would take a whole core.
constexpr std::chrono::milliseconds kBetweenLooks{2};
constexpr std::size_t kAllThatIsAsked = 4096;

void send(const std::vector<std::byte>& bytes, int process, Tag tag) {
  MPI_Send(bytes.data(), static_cast<int>(bytes.size()), MPI_BYTE, process, tag, MPI_COMM_WORLD);
}

struct Message {
  int tag = 0;
  int process = 0;
  std::vector<std::byte> bytes;
};

/// The next message that is there, without waiting.
bool receive(Message& message) {
  int isThere = 0;
  MPI_Status status;
  MPI_Iprobe(MPI_ANY_SOURCE, MPI_ANY_TAG, MPI_COMM_WORLD, &isThere, &status);
  if (isThere == 0) {
    return false;
  }
  int size = 0;
  MPI_Get_count(&status, MPI_BYTE, &size);
  message.tag = status.MPI_TAG;
  message.process = status.MPI_SOURCE;
  message.bytes.resize(static_cast<std::size_t>(size));
  MPI_Recv(message.bytes.data(), size, MPI_BYTE, status.MPI_SOURCE, status.MPI_TAG, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
  return true;
}

}  // namespace

MpiExecutor::MpiExecutor(int size, std::size_t jobs) : jobs_(jobs), load_(static_cast<std::size_t>(size)) {
  SignalPipe::install();
}

MpiExecutor::~MpiExecutor() {
  while (!places_.empty()) {
    MpiExecutor::cancel(places_.begin()->first);
  }
}

void MpiExecutor::start(std::int64_t ticket, const RunRequest& request) {
  const auto process = std::min_element(load_.begin() + 1, load_.end()) - load_.begin();
  send(packRequest(ticket, request), static_cast<int>(process), kStart);
  ++load_[static_cast<std::size_t>(process)];
  places_[ticket] = static_cast<int>(process);
}

void MpiExecutor::cancel(std::int64_t ticket) {
  const auto found = places_.find(ticket);
  if (found == places_.end()) {
    return;
  }
  send(packRequest(ticket, {}), found->second, kCancel);
  --load_[static_cast<std::size_t>(found->second)];
  places_.erase(found);
}

std::vector<Executor::Finished> MpiExecutor::wait(std::chrono::milliseconds longest) {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  std::vector<Finished> finished;
  while (true) {
    for (Message message; receive(message);) {
      Finished one = unpackFinished(message.bytes);
      const auto found = places_.find(one.ticket);
      if (found != places_.end()) {  // or else it crossed its cancellation
        --load_[static_cast<std::size_t>(found->second)];
        places_.erase(found);
        finished.push_back(std::move(one));
      }
    }
    if (!finished.empty() || SignalPipe::stopSignal() != 0 || std::chrono::steady_clock::now() >= deadline) {
      return finished;
    }
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

void runMpiWorker(const std::string& scratchFolder) {
  LocalExecutor executor(kAllThatIsAsked, scratchFolder);
  while (true) {
    for (Message message; receive(message);) {
      if (message.tag == kEnd) {
        send({}, 0, kEnded);
        return;
      }
      const TicketedRequest asked = unpackRequest(message.bytes);
      if (message.tag == kStart) {
        executor.start(asked.ticket, asked.request);
      } else {
        executor.cancel(asked.ticket);
      }
    }
    for (const Executor::Finished& one : executor.collect()) {
      send(packFinished(one), 0, kFinished);
    }
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

void endMpiWorkers(int size) {
  for (int process = 1; process < size; ++process) {
    send({}, process, kEnd);
  }
  // A large message waits for its receiver: what is on its way has to be taken, or else its sender never comes to the end.
  for (int ended = 0; ended < size - 1;) {
    Message message;
    if (!receive(message)) {
      std::this_thread::sleep_for(kBetweenLooks);
    } else if (message.tag == kEnded) {
      ++ended;
    }
  }
}

}  // namespace controller

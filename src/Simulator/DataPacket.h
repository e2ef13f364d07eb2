#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Observations on their way from the simulation loop to the manager and the result files: one row for each performance
/// variable, all rows of the same capacity.
///
/// A packet is reused without being cleared: the count of a row says how much of it is valid. No index is checked.
/// Cost     O(1) for each operation, no allocation after construction.
class DataPacket {
 public:
  /// numPV          rows
  /// maxNumReports  observations that a row can hold
  /// Counts and observations start at 0; a size below 0 is taken as 0.
  DataPacket(int clientId, int experimentNumber, int numPV, int maxNumReports);

  [[nodiscard]] int GetClientId() const { return _clientId; }
  [[nodiscard]] int GetExperimentNum() const { return _experimentNumber; }
  /// Valid observations in row `pv`.
  [[nodiscard]] int GetNumObs(int pv) const { return _numObs[static_cast<std::size_t>(pv)]; }
  /// Start of row `pv`; borrowed, valid as long as the packet.
  [[nodiscard]] double* GetObsArray(int pv) { return _observations.data() + rowStart(pv); }

  void SetClientId(int clientId) { _clientId = clientId; }
  void SetExperimentNum(int experimentNumber) { _experimentNumber = experimentNumber; }
  void SetObs(int pv, int index, double value) {
    _observations[rowStart(pv) + static_cast<std::size_t>(index)] = value;
  }
  void SetNumObs(int pv, int count) { _numObs[static_cast<std::size_t>(pv)] = count; }

 private:
  [[nodiscard]] std::size_t rowStart(int pv) const {
    return static_cast<std::size_t>(_maxNumReports) * static_cast<std::size_t>(pv);
  }

  std::int32_t _clientId;
  std::int32_t _experimentNumber;
  std::int32_t _numPV;          // rows
  std::int32_t _maxNumReports;  // places in a row
  std::vector<std::int32_t> _numObs;
  std::vector<double> _observations;  // row pv starts at _maxNumReports * pv
};

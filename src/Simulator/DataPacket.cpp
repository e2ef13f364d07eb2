#include "Simulator/DataPacket.h"

#include <algorithm>

DataPacket::DataPacket(int clientId, int experimentNumber, int numPV, int maxNumReports)
    : _clientId(clientId),
      _experimentNumber(experimentNumber),
      _numPV(std::max(numPV, 0)),
      _maxNumReports(std::max(maxNumReports, 0)),
      _numObs(static_cast<std::size_t>(_numPV)),
      _observations(static_cast<std::size_t>(_numPV) * static_cast<std::size_t>(_maxNumReports)) {}

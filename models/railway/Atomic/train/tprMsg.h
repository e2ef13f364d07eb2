#pragma once

#include <cstdint>

#include "railway/Atomic/train/MessageStruct.h"

/// Record of a train position report.
struct tprMsg_state {
  std::int32_t timestamp = 0;           // creation time in whole time units; 0: no report is held
  std::int32_t position = 0;            // head position of the train when the report was made
  std::int16_t speed = 0;               // speed of the train when the report was made
  std::int16_t integrityConfirmed = 0;  // 1 when the train confirmed its integrity, otherwise 0
};

/// A train position report as a part of the marking.
class tprMsg : public support::MessageStruct<tprMsg_state> {
 public:
  explicit tprMsg(const char* name);
  tprMsg(const char* name, const char* parent);
  tprMsg(const char* name, tprMsg_state init);
  tprMsg(const char* name, const char* parent, tprMsg_state init);

  // Owned by the field list.
  ExtendedPlace<int>* timestamp;
  ExtendedPlace<int>* position;
  ExtendedPlace<short>* speed;
  ExtendedPlace<short>* integrityConfirmed;
};

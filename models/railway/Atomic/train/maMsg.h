#pragma once

#include <cstdint>

#include "railway/Atomic/train/MessageStruct.h"

/// Record of a movement authority.
struct maMsg_state {
  std::int32_t timestamp = 0;  // creation time in whole time units; 0: no authority is held
  std::int32_t EoA = 0;        // end of authority, a position on the line
};

/// A movement authority as a part of the marking.
class maMsg : public support::MessageStruct<maMsg_state> {
 public:
  explicit maMsg(const char* name);
  maMsg(const char* name, const char* parent);
  maMsg(const char* name, maMsg_state init);
  maMsg(const char* name, const char* parent, maMsg_state init);

  // Owned by the field list.
  ExtendedPlace<int>* timestamp;
  ExtendedPlace<int>* EoA;
};

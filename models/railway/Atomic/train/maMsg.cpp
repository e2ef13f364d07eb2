#include "railway/Atomic/train/maMsg.h"

maMsg::maMsg(const char* name) : maMsg(name, "", maMsg_state{}) {}

maMsg::maMsg(const char* name, const char* parent) : maMsg(name, parent, maMsg_state{}) {}

maMsg::maMsg(const char* name, maMsg_state init) : maMsg(name, "", init) {}

maMsg::maMsg(const char* name, const char* parent, maMsg_state init)
    : MessageStruct(name, parent),
      timestamp(addField<int>(ArrayType_INT, "timestamp", init.timestamp)),
      EoA(addField<int>(ArrayType_INT, "EoA", init.EoA)) {}

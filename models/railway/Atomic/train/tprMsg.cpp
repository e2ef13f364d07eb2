#include "railway/Atomic/train/tprMsg.h"

tprMsg::tprMsg(const char* name) : tprMsg(name, "", tprMsg_state{}) {}

tprMsg::tprMsg(const char* name, const char* parent) : tprMsg(name, parent, tprMsg_state{}) {}

tprMsg::tprMsg(const char* name, tprMsg_state init) : tprMsg(name, "", init) {}

tprMsg::tprMsg(const char* name, const char* parent, tprMsg_state init)
    : MessageStruct(name, parent),
      timestamp(addField<int>(ArrayType_INT, "timestamp", init.timestamp)),
      position(addField<int>(ArrayType_INT, "position", init.position)),
      speed(addField<short>(ArrayType_SHORT, "speed", init.speed)),
      integrityConfirmed(addField<short>(ArrayType_SHORT, "integrityConfirmed", init.integrityConfirmed)) {}

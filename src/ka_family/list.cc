#include "list.h"

#include "ka_asn2.h"

namespace karil {

Status copyPair(Anybuf &oid, Bytes oidOctets, Anybuf &value, Bytes valueOctets) {
    oid.tag = TagObjectId;
    KA_STEP_AS("------>KAPR_Malloc", replace(oid, oidOctets));
    KA_STEP_AS("------>KAPR_Malloc", replace(value, valueOctets));
    return KACERT_Ok;
}

} // namespace karil

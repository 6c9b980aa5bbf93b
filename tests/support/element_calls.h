// The exported calls that make records of a record, by their names, and chains of records as text.
#pragma once

#include "rows.h"

#include "karil/asn1.h"

#include <dlfcn.h>

namespace karil_test {

using ElementCall = int32_t (*)(const Anybuf *, Anybuf **);

inline thread_local uint32_t tagNumber; // what a tagged value's writer takes and its reader gives

// A node of a record's fields; the record's octets are gone where there is none to be had.
inline int32_t asNode(int32_t status, const Anybuf &record, Anybuf **to) {
    if (status != KACERT_Ok) return status;
    *to = static_cast<Anybuf *>(KAPR_Malloc("test", __LINE__, sizeof record));
    if (*to != nullptr)
        **to = record;
    else
        KAPR_Free(record.data);
    return *to != nullptr ? KACERT_Ok : KACERT_MemoryErr;
}

inline int32_t readIntegerArray(const Anybuf *from, Anybuf **to) {
    Anybuf record = {};
    const int32_t status = KAsn1_ReadIntegerArray(from, to != nullptr ? &record : nullptr);
    return asNode(status, record, to);
}

inline int32_t readObjectId(const Anybuf *from, Anybuf **to) {
    AlgorithmRecord *record = nullptr;
    const int32_t status = KAsn1_ReadObjectId(from, to != nullptr ? &record : nullptr);
    const Block<AlgorithmRecord> owner(record);
    EXPECT_TRUE(record == nullptr || record->id == 0);
    return asNode(status, record != nullptr ? record->oid : Anybuf{}, to);
}

inline int32_t writeInteger(const Anybuf *from, Anybuf **to) {
    uint32_t value = 0;
    for (uint32_t i = 0; i < from->length; ++i) value = value << 8 | from->data[i];
    return KAsn1_WriteInteger(value, to);
}

inline int32_t writeObjectId(const Anybuf *from, Anybuf **to) {
    const AlgorithmRecord algorithm = {7, from != nullptr ? *from : Anybuf{}};
    return KAsn1_WriteObjectId(from != nullptr ? &algorithm : nullptr, to);
}

// The call of a name without its KAsn1_; null, and a failure, where there is none.
inline ElementCall elementCall(const std::string &name) {
    static const std::map<std::string, ElementCall> adapted = {
        {"ReadIntegerArray", readIntegerArray},
        {"ReadObjectId", readObjectId},
        {"WriteInteger", writeInteger},
        {"WriteObjectId", writeObjectId},
        {"WriteBoolean",
         [](auto from, auto to) { return KAsn1_WriteBoolean(from != nullptr ? from->data : nullptr, to); }},
        {"WriteNull", [](auto, auto to) { return KAsn1_WriteNull(to); }},
        {"WriteExplicit", [](auto from, auto to) { return KAsn1_WriteExplicit(from, tagNumber, to); }},
        {"WriteImplicit", [](auto from, auto to) { return KAsn1_WriteImplicit(from, tagNumber, to); }},
        {"ReadExplicit", [](auto from, auto to) { return KAsn1_ReadExplicit(from, to, &tagNumber); }},
        {"ReadImplicit", [](auto from, auto to) { return KAsn1_ReadImplicit(from, to, &tagNumber); }},
    };
    const auto found = adapted.find(name);
    if (found != adapted.end()) return found->second;
    void *const symbol = dlsym(RTLD_DEFAULT, ("KAsn1_" + name).c_str());
    EXPECT_NE(symbol, nullptr) << "there is no call " << name;
    return reinterpret_cast<ElementCall>(symbol);
}

// A row's calls: itself, "Write*" and "Read*" for SEQUENCE and SET, "ReadString" for all that read alike.
inline std::vector<std::string> callsOf(const std::string &call) {
    if (call == "ReadString")
        return {"ReadOctetString", "ReadBitString",       "ReadCharString", "ReadBmpString",
                "ReadUTF8String",  "ReadPrintableString", "ReadEnumerated", "ReadIa5String"};
    if (call.back() != '*') return {call};
    const std::string verb = call.substr(0, call.size() - 1);
    return {verb + "Sequence", verb + "Set"};
}

// A row's source as linked records, each in a heap block of just its size; "none": no record, "gone": no octets.
struct Records {
    std::vector<Exact> all;

    explicit Records(const Row &row, bool isSet) {
        std::vector<std::string> parts = row.list("source");
        if (parts.empty()) parts = {""};
        for (const std::string &part : parts) {
            const size_t mark = std::min(part.find('#'), part.size());
            const size_t slash = std::min(part.find('/'), part.size());
            const std::string octets = part.substr(0, mark);
            if (octets == "none") break;
            const bool isGone = octets.rfind("gone", 0) == 0;
            Exact one(isGone ? Octets(1) : row.parse(octets),
                      mark < part.size() ? static_cast<uint32_t>(std::stoul(part.substr(mark + 1))) : 0);
            if (isSet && one.record.length != 0 && (one.record.data[0] & 0x1F) == 16) one.record.data[0] |= 1;
            if (isGone) one.record.data = nullptr;
            if (slash < part.size()) one.record.unusedBits = static_cast<uint32_t>(std::stoul(part.substr(slash + 1)));
            all.push_back(std::move(one));
        }
        for (size_t i = 1; i < all.size(); ++i) all[i - 1].record.next = &all[i].record;
    }
    const Anybuf *first() const { return all.empty() ? nullptr : &all[0].record; }
};

// A chain's nodes in the same form; every link is checked on the way.
inline std::string nodesOf(const Anybuf *first) {
    std::string nodes;
    const Anybuf *before = nullptr;
    for (const Anybuf *node = first; node != nullptr; before = node, node = node->next) {
        EXPECT_TRUE(node->prev == before && node->form == 2);
        if (before != nullptr) nodes += ", ";
        if (node->data != nullptr && node->length != 0) nodes += toHex(*node) + ' ';
        nodes +=
            '#' + std::to_string(node->tag) + (node->unusedBits == 0 ? "" : '/' + std::to_string(node->unusedBits));
    }
    return nodes;
}

} // namespace karil_test

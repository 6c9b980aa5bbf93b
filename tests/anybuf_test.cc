// The records and the memory that every family shares.
#include "testkit.h"

#include <dlfcn.h>

#include <cstring>

using namespace karil_test;

namespace {

// The library's own functions, which this program's stand in place of.
TEST(Memory, BlocksAreZeroedEvenWhenReused) {
    const auto allocate = reinterpret_cast<decltype(&KAPR_Malloc)>(dlsym(RTLD_NEXT, "KAPR_Malloc"));
    const auto release = reinterpret_cast<decltype(&KAPR_Free)>(dlsym(RTLD_NEXT, "KAPR_Free"));
    for (int i = 0; i < 8; ++i) {
        auto *block = static_cast<uint8_t *>(allocate("t", 1, 64));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(toHex(block, 64), toHex(Octets(64)));
        memset(block, 0xFF, 64);
        release(block);
    }
    void *empty = allocate(nullptr, 0, 0);
    EXPECT_NE(empty, nullptr);
    release(empty);
    release(nullptr);
}

bool isSame(const Anybuf &one, const Anybuf &other) {
    return memcmp(&one, &other, sizeof one) == 0;
}

TEST(Anybuf, InitAndClearZeroAllSevenFields) {
    Anybuf other = {};
    uint8_t octet = 0;
    Anybuf record{&octet, 1, 2, 3, 4, &other, &other};
    EXPECT_EQ(KI_InitAnybuf(&record), &record);
    EXPECT_TRUE(isSame(record, {}));
    record = {static_cast<uint8_t *>(KAPR_Malloc("t", 1, 4)), 4, 2, 3, 4, &other, &other};
    KI_ClearAnybuf(&record); // the leak check sees a block that stays
    EXPECT_TRUE(isSame(record, {}));
    EXPECT_EQ(KI_InitAnybuf(nullptr), nullptr);
    KI_ClearAnybuf(nullptr);
    KI_FreeAnybuf(nullptr);
}

TEST(Anybuf, ACopyHasEveryFieldAndABlockOfItsOwn) {
    sweep([] {
        Anybuf other = {};
        Octets value = hex("03 02 04 F0");
        const AlgorithmRecord source = {5, {value.data(), 4, 4, 2, 3, &other, &other}};
        AlgorithmRecord copy = {};
        ASSERT_EQ(TRIED(KI_CopyAlgorithm(&copy, &source)), KACERT_Ok);
        value[0] = 0;
        const Block<uint8_t> owner(copy.oid.data);
        EXPECT_EQ(toHex(copy.oid), "03 02 04 F0");
        copy.oid.data = value.data();
        EXPECT_TRUE(copy.id == 5 && isSame(copy.oid, source.oid));
    });
    const Anybuf none{nullptr, 0, 1, 2, 3, nullptr, nullptr};
    Anybuf copy = {};
    ASSERT_EQ(KI_CopyAnybuf(&copy, &none), KACERT_Ok);
    const Block<uint8_t> owner(std::exchange(copy.data, nullptr)); // no octets still take a block
    EXPECT_NE(owner, nullptr);
    EXPECT_TRUE(isSame(copy, none));
}

TEST(Anybuf, SetKeepsTheTagAndClearsTheRest) {
    sweep([] {
        Anybuf other = {};
        Anybuf record{nullptr, 9, 5, 2, 0xA3, &other, &other};
        const Octets value = hex("01 02");
        ASSERT_EQ(TRIED(KI_SetAttributeCharValue(&record, value.data(), 2)), KACERT_Ok);
        const Block<uint8_t> first(record.data);
        EXPECT_TRUE(isSame(record, {record.data, 2, 0, 0, 0xA3, nullptr, nullptr}));
        // A second value leaves the first block to whoever holds it, and no octets still take a block.
        ASSERT_EQ(TRIED(KI_SetAttributeCharValue(&record, nullptr, 0)), KACERT_Ok);
        EXPECT_EQ(toHex(first.get(), 2), "01 02");
        EXPECT_TRUE(record.data != nullptr && record.length == 0);
        KI_ClearAnybuf(&record);
    });
}

} // namespace

// The records and the memory that every family shares.
#include "karil/base.h"
#include "support.h"

#include <cstring>
#include <gtest/gtest.h>

namespace karil_test {
namespace {

TEST(Memory, BlocksAreZeroedEvenWhenReused) {
    for (int i = 0; i < 8; ++i) {
        Block<uint8_t> block(static_cast<uint8_t *>(KAPR_Malloc("t", 1, 64)));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(toHex(block.get(), 64), toHex(Octets(64, 0)));
        memset(block.get(), 0xFF, 64);
    }
    Block<void> empty(KAPR_Malloc(nullptr, 0, 0));
    EXPECT_NE(empty, nullptr);
    KAPR_Free(nullptr);
}

TEST(Anybuf, InitAndClearZeroAllSevenFields) {
    const Anybuf zero = {};
    Anybuf other = {};
    uint8_t octet = 0;
    Anybuf record{&octet, 1, 2, 3, 4, &other, &other};
    EXPECT_EQ(KI_InitAnybuf(&record), &record);
    EXPECT_EQ(memcmp(&record, &zero, sizeof zero), 0);

    record = {static_cast<uint8_t *>(KAPR_Malloc("t", 1, 4)), 4, 2, 3, 4, &other, &other};
    KI_ClearAnybuf(&record); // the leak check sees a block that stays
    EXPECT_EQ(memcmp(&record, &zero, sizeof zero), 0);
}

TEST(Anybuf, CopyTakesEveryFieldAndABlockOfItsOwn) {
    Anybuf before = {};
    Anybuf behind = {};
    Octets value = hex("03 02 04 F0");
    const Anybuf source{value.data(), 4, 4, 2, 3, &behind, &before};
    Anybuf copy = {};
    ASSERT_EQ(KI_CopyAnybuf(&copy, &source), KACERT_Ok);
    value[0] = 0;
    EXPECT_EQ(toHex(copy), "03 02 04 F0");
    EXPECT_NE(copy.data, source.data);
    const Block<uint8_t> owner(copy.data);
    copy.data = value.data();
    EXPECT_EQ(memcmp(&copy, &source, sizeof copy), 0);

    const Anybuf none{nullptr, 0, 1, 2, 3, nullptr, nullptr};
    ASSERT_EQ(KI_CopyAnybuf(&copy, &none), KACERT_Ok);
    const Block<uint8_t> empty(copy.data);
    EXPECT_NE(empty, nullptr);
    copy.data = nullptr;
    EXPECT_EQ(memcmp(&copy, &none, sizeof copy), 0);
}

TEST(Anybuf, SetKeepsTheTagAndClearsTheRest) {
    Anybuf other = {};
    Anybuf record{nullptr, 9, 5, 2, 0xA3, &other, &other};
    const Octets value = hex("01 02");
    ASSERT_EQ(KI_SetAttributeCharValue(&record, value.data(), 2), KACERT_Ok);
    const Block<uint8_t> first(record.data);
    const Anybuf want{record.data, 2, 0, 0, 0xA3, nullptr, nullptr};
    EXPECT_EQ(memcmp(&record, &want, sizeof want), 0);
    EXPECT_EQ(toHex(record), "01 02");

    // A second value leaves the first block to whoever holds it, and no octets still give a block.
    ASSERT_EQ(KI_SetAttributeCharValue(&record, nullptr, 0), KACERT_Ok);
    EXPECT_EQ(toHex(first.get(), 2), "01 02");
    EXPECT_NE(record.data, nullptr);
    EXPECT_EQ(record.length, 0u);
    KI_ClearAnybuf(&record);
}

} // namespace
} // namespace karil_test

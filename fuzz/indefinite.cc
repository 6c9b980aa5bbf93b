// Indefinite lengths into definite form, beside a conversion that takes one closing at a time.
#include "fuzz.h"

#include <optional>

using namespace karil_fuzz;

namespace {

struct Pair {
    size_t opening, closing;
    size_t inside = 0; // pairs; in the list they stand right behind this one
    size_t size = 0;
};

size_t rest(const uint8_t *at) {
    uint32_t value = *at <= 0x80 ? *at : 0;
    const size_t count = *at <= 0x80 ? 0 : *at & 7;
    for (size_t i = 1; i <= count; ++i)
        value = value << 8 | at[i];
    return value + count;
}
bool isSkipped(uint8_t tag) {
    return tag >= 2 && tag <= 6;
}
size_t counted(size_t size) {
    return size < 0x100 ? 1 : size < 0x10000 ? 2 : size < 0x1000000 ? 3 : 4;
}

// The pairs in the order of their openings. `first`: the first mark, if there is one. False for marks that don't fit.
bool findPairs(const Octets &work, size_t length, std::vector<Pair> &pairs, std::optional<size_t> &first) {
    std::vector<size_t> open;
    bool isPaired = false, isFront = false;
    for (size_t i = 0; i < length; ++i) {
        const bool opens = (work[i] == 0x30 || work[i] == 0xA0) && work[i + 1] == 0x80;
        if (!opens && (work[i] != 0 || work[i + 1] != 0))
            continue;
        isFront = isFront || (!first && !opens);
        first = first.value_or(i);
        if (opens) {
            open.push_back(pairs.size());
            pairs.push_back({i, 0});
            i += isSkipped(work[i + 2]) ? 3 + rest(&work[i + 3]) : 0;
        } else if (isPaired = !open.empty(); isPaired) {
            pairs[open.back()].closing = i++;
            pairs[open.back()].inside = pairs.size() - open.back() - 1;
            open.pop_back();
        } else {
            ++i;
        }
    }
    return open.empty() && isPaired && !isFront;
}

void takeOut(Octets &work, std::vector<Pair> &pairs, size_t limit) {
    for (const Pair &pair : pairs)
        work[pair.closing] = work[pair.closing + 1] = 0xAA;
    for (size_t k = pairs.size(); k-- > 0;) {
        Pair &pair = pairs[k];
        size_t growth = 0, moved = 0;
        for (size_t j = k + 1; j <= k + pair.inside; ++j) {
            growth += pairs[j].size > 127 ? counted(pairs[j].size) : 0;
            moved += pairs[j].size > 127 ? counted(pairs[j].size - 2) : 0;
        }
        pair.size = pair.closing - pair.opening - 2 - 2 * pair.inside;
        pair.size += pair.size > 127 ? growth : 0;
        const size_t from = pair.closing - 2 * pair.inside + 2;
        memmove(&work[pair.opening + 2 + pair.size - moved], &work[from], limit - from);
    }
}

Octets lengthField(size_t size) {
    Octets field = {static_cast<uint8_t>(size)};
    for (size >>= 8; size > 0; size >>= 8)
        field.insert(field.begin(), static_cast<uint8_t>(size));
    if (field[0] > 0x7F)
        field.insert(field.begin(), 0);
    if (field.size() > 1)
        field.insert(field.begin(), static_cast<uint8_t>(0x80 | field.size()));
    return field;
}

// Nothing where the input is refused.
std::optional<Octets> convert(Bytes input) {
    Octets work(input.begin(), input.end());
    work.resize(input.size() + 1000);
    std::vector<Pair> pairs;
    std::optional<size_t> first;
    const bool fits = findPairs(work, input.size(), pairs, first);
    for (size_t q = first.value_or(0); q-- > 2;)
        if (isSkipped(work[q - 1]) && work[q] != 0x80 && q + 1 + rest(&work[q]) > *first)
            first.reset();
    if (!first)
        return Octets(input.begin(), input.end());
    if (!fits)
        return {};
    takeOut(work, pairs, input.size() + 200);
    for (size_t k = pairs.size(); k-- > 0;) {
        const auto isBefore = [&](const Pair &other) { return other.closing < pairs[k].opening; };
        const auto before = static_cast<size_t>(std::count_if(pairs.begin(), pairs.end(), isBefore));
        const auto at = work.begin() + static_cast<ptrdiff_t>(pairs[k].opening + 1 - 2 * before);
        const Octets field = lengthField(pairs[k].size);
        *at = field[0];
        work.insert(at + 1, field.begin() + 1, field.end());
    }
    const size_t size = 2 + rest(&work[1]);
    if ((work[1] >= 0x80 && (work[1] & 7) == 0) || size > input.size() + 500)
        return {};
    work.resize(size);
    return work;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const Area source(Bytes(data, size));
    const Area output(size + 500);
    constexpr uint32_t Untouched = 0xA5A5A5A5;
    uint32_t length = Untouched;
    const int32_t status = KAsn1_IndefiniteToDefinite(source.data(), sizeOf(source.bytes()), output.data(), &length);
    Octets start(data, data + size);
    start.resize(size + 4);
    if ((start[0] == 0x30 || start[0] == 0xA0) && start[1] < 0x80 && start[1] == start[3] + 2) {
        must(status == KACERT_Ok && length == Untouched, "an element with one short child stays as it is");
        return 0;
    }
    const std::optional<Octets> want = convert(source.bytes());
    must(status == (want ? KACERT_Ok : KAPKCS7_IndefiniteFormatErr), "both take the same input");
    must(want ? equal(*want, output.bytes().first(length)) : length == Untouched, "both give the same octets");
    return 0;
}

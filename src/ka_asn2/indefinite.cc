// A scanner for two octets that open an element and two that close one. It knows of elements only that one of a few
// primitive tags can be skipped directly after an opening.
#include "karil/indefinite.h"

#include "ka_asn2.h"

#include <algorithm>
#include <string.h>

using namespace karil;

namespace {

constexpr uint8_t IndefiniteLength = 0x80;
constexpr uint8_t TakenOut = 0xAA;
constexpr uint32_t LongestShort = 0x7F;
constexpr uint32_t Slack = 500;       // zeros after the input: the scan looks at no more than 11 of them
constexpr uint32_t MovingSlack = 200; // of these, what moves with the input
constexpr uint64_t MostMoved = uint64_t{1} << 32;

// The octets that are worked on. All after `end` are zero.
struct Work {
    Owned<uint8_t> block;
    uint32_t length; // of the input
    uint32_t end;

    uint8_t *octets() const { return block.get(); }
    uint32_t size() const { return length + Slack; }
};

// What the openings after a mark add to an element around them: to its size, and to the octets by which its tail is
// moved too far back.
struct Sums {
    uint32_t size = 0;
    uint32_t excess = 0;
};

struct Opening {
    uint32_t closing; // the index of its closing
    uint32_t size;    // of its content, once the lengths in it are written
    uint32_t excess;  // by how much its tail is moved too far back
};

struct Closing {
    bool isPaired; // it has its opening
    uint32_t nextFree;
    Sums after;
};

// In the order of their positions.
struct Mark {
    uint32_t position;
    bool isOpening;
    union {
        Opening opening;
        Closing closing;
    };

    bool isPairedClosing() const { return !isOpening && closing.isPaired; }
};

bool isOpener(uint8_t tag) {
    return tag == 0x30 || tag == 0xA0;
}

bool isPrimitive(uint8_t tag) {
    return tag >= TagInteger && tag <= TagObjectId;
}

// The octets of an element after the first octet of its length, which is at `at`.
uint64_t restOf(const uint8_t *at) {
    if (*at <= IndefiniteLength)
        return *at;
    const uint32_t count = *at & 7u;
    return uint64_t{count} + integerValue({at + 1, count});
}

// A definite element with a single short child. The value of a long length is not used, but the cell for it is asked
// for: without one, the input is left as it is.
bool staysAsItIs(const uint8_t *octets) {
    if (!isOpener(octets[0]) || octets[1] == IndefiniteLength)
        return false;
    if (octets[1] < IndefiniteLength)
        return octets[1] == octets[3] + 2;
    uint32_t *cell = nullptr;
    const Status status = KAsn1_Low_CharToInt(octets + 2, octets[1] & 7u, &cell);
    const Owned<uint32_t> owned(cell);
    return status != KACERT_Ok;
}

// Counts the marks, and stores them if `marks` is given.
uint32_t scan(const Work &work, Mark *marks) {
    const uint8_t *octets = work.octets();
    uint32_t count = 0;
    for (uint64_t i = 0; i < work.length; ++i) {
        const bool opens = isOpener(octets[i]) && octets[i + 1] == IndefiniteLength;
        const bool closes = octets[i] == 0 && octets[i + 1] == 0;
        if (!opens && !closes)
            continue;
        if (marks != nullptr)
            marks[count] = {static_cast<uint32_t>(i), opens, {}};
        ++count;
        if (closes)
            ++i;
        else if (isPrimitive(octets[i + 2]))
            i += 3 + restOf(octets + i + 3);
    }
    return count;
}

bool isInsideDefinite(const uint8_t *octets, uint32_t position) {
    if (position <= 2)
        return false;
    for (uint32_t at = position - 2; at >= 1; --at)
        if (isPrimitive(octets[at]) && octets[at + 1] != IndefiniteLength &&
            at + 2 + restOf(octets + at + 1) > position)
            return true;
    return false;
}

// The octets that `size` counts as when an outer length is computed.
uint32_t countedOctets(uint32_t size) {
    return size <= 0xFF ? 1 : size <= 0xFFFF ? 2 : size <= 0xFFFFFF ? 3 : 4;
}

// The marks between an opening and its closing: as many openings as closings, all of them pairs.
uint32_t marksInside(const Opening &opening, uint32_t index) {
    return opening.closing - index - 1;
}

// The opening numbered `index`. `sums`: of all openings after it.
void measure(std::span<Mark> marks, uint32_t index, Sums &sums) {
    Opening &opening = marks[index].opening;
    const Mark &end = marks[opening.closing];
    opening.size = end.position - marks[index].position - 2 - marksInside(opening, index);
    if (opening.size <= LongestShort)
        return;
    opening.excess = sums.excess - end.closing.after.excess;
    opening.size += sums.size - end.closing.after.size;
    sums.size += countedOctets(opening.size);
    // The place that the tail moves to is computed from sizes that are 2 less.
    sums.excess += countedOctets(opening.size) - countedOctets(opening.size - 2);
}

// Pairs each opening, the last one first, with the first closing after it that is still free.
Status pair(std::span<Mark> marks) {
    const auto none = static_cast<uint32_t>(marks.size());
    uint32_t free = none;
    Sums sums;
    for (uint32_t i = none; i-- > 0;) {
        Mark &mark = marks[i];
        if (!mark.isOpening) {
            mark.closing = {false, free, sums};
            free = i;
            continue;
        }
        if (free == none)
            return KAPKCS7_IndefiniteFormatErr;
        mark.opening = {free, 0, 0};
        Closing &closing = marks[free].closing;
        free = closing.nextFree;
        closing.isPaired = true;
        measure(marks, i, sums);
    }
    return marks.front().isOpening && marks.back().isPairedClosing() ? KACERT_Ok : KAPKCS7_IndefiniteFormatErr;
}

// The tail after an element that starts the input is not in the result, wherever it is moved.
bool isMovedTooFar(const Mark &mark) {
    return mark.isOpening && mark.opening.excess > 0 && mark.position > 0;
}

// Moves the octets from `from` to the end, leaving zeros after them.
void moveTail(Work &work, uint32_t from, uint32_t to) {
    const uint32_t end = work.end + to - from;
    memmove(work.octets() + to, work.octets() + from, work.end - from);
    if (end < work.end)
        memset(work.octets() + end, 0, work.end - end);
    work.end = end;
}

// Takes the paired closings out by moving the tail for each of them. If a move goes too far back, the closings
// of the elements around are no longer at their places.
Status moveTails(Work &work, std::span<const Mark> marks) {
    for (const Mark &mark : marks)
        if (mark.isPairedClosing())
            memset(work.octets() + mark.position, TakenOut, 2);
    uint64_t moved = 0;
    for (auto i = static_cast<uint32_t>(marks.size()); i-- > 0;) {
        const Mark &mark = marks[i];
        if (!mark.isOpening || mark.position == 0)
            continue;
        const uint32_t from = marks[mark.opening.closing].position - marksInside(mark.opening, i) + 2;
        const uint32_t to = from - 2 + mark.opening.excess;
        moved += work.end - from;
        if (moved > MostMoved || uint64_t{work.end} + to - from > uint64_t{work.length} + MovingSlack)
            return KAPKCS7_IndefiniteFormatErr;
        moveTail(work, from, to);
    }
    return KACERT_Ok;
}

// The same in one pass, for moves that go back by just the closing.
void closeGaps(Work &work, std::span<const Mark> marks) {
    uint8_t *octets = work.octets();
    uint32_t from = 0;
    uint32_t to = 0;
    for (const Mark &mark : marks) {
        if (!mark.isPairedClosing())
            continue;
        memmove(octets + to, octets + from, mark.position - from);
        to += mark.position - from;
        from = mark.position + 2;
    }
    moveTail(work, from, to);
}

Status takeOutClosings(Work &work, std::span<const Mark> marks) {
    if (std::ranges::any_of(marks, isMovedTooFar))
        return moveTails(work, marks);
    closeGaps(work, marks);
    return KACERT_Ok;
}

// The octets of a length after the one that takes the place of 80.
uint32_t extraOctets(uint32_t size) {
    uint8_t octets[5];
    return size <= LongestShort ? 0 : integerOctets(size, octets);
}

void writeLength(uint8_t *at, uint32_t size) {
    uint8_t octets[5];
    const uint32_t count = integerOctets(size, octets);
    if (count > 1)
        *at++ = static_cast<uint8_t>(0x80 | count);
    memcpy(at, octets, count);
}

// From the last opening back, so that each stretch between two of them moves once. An opening stands at the place that
// taking out all closings in front of it would leave it.
Status writeLengths(Work &work, std::span<const Mark> marks) {
    uint64_t growth = 0;
    uint32_t closings = 0;
    for (const Mark &mark : marks) {
        growth += mark.isOpening ? extraOctets(mark.opening.size) : 0;
        closings += mark.isPairedClosing() ? 1 : 0;
    }
    if (work.end + growth > work.size())
        return KAPKCS7_IndefiniteFormatErr;
    uint8_t *octets = work.octets();
    uint32_t end = work.end;
    work.end += static_cast<uint32_t>(growth);
    for (auto i = marks.size(); i-- > 0;) {
        const Mark &mark = marks[i];
        closings -= mark.isPairedClosing() ? 1 : 0;
        if (!mark.isOpening)
            continue;
        const uint32_t field = mark.position - 2 * closings + 1;
        memmove(octets + field + 1 + growth, octets + field + 1, end - field - 1);
        growth -= extraOctets(mark.opening.size);
        writeLength(octets + field + growth, mark.opening.size);
        end = field;
    }
    return KACERT_Ok;
}

Status convert(Work &work, std::span<Mark> marks) {
    KA_PASS(pair(marks));
    KA_PASS(takeOutClosings(work, marks));
    return writeLengths(work, marks);
}

// What the header at the start claims.
Status sizeOfResult(const Work &work, uint64_t &size) {
    const uint8_t *octets = work.octets();
    const uint8_t first = octets[1];
    size = 2 + restOf(octets + 1);
    const bool hasNone = first >= IndefiniteLength && (first & 7) == 0;
    return hasNone || size > work.size() ? KAPKCS7_IndefiniteFormatErr : KACERT_Ok;
}

struct Output {
    uint8_t *octets;
    uint32_t *length;

    void set(const uint8_t *from, uint64_t size) const {
        if (size > 0)
            memmove(octets, from, static_cast<size_t>(size));
        *length = static_cast<uint32_t>(size);
    }
};

Status makeDefinite(Work &work, const Output &output) {
    if (staysAsItIs(work.octets()))
        return KACERT_Ok;
    const uint64_t count = scan(work, nullptr);
    const Owned<Mark> block(count == 0 ? nullptr : KA_CREATE_WITH((count - 1) * sizeof(Mark), Mark));
    if (count > 0 && block == nullptr)
        return KAPKCS7_IndefiniteFormatErr;
    const std::span<Mark> marks(block.get(), scan(work, block.get()));
    uint64_t size = work.length;
    if (!marks.empty() && !isInsideDefinite(work.octets(), marks.front().position)) {
        KA_PASS(convert(work, marks));
        KA_PASS(sizeOfResult(work, size));
    }
    output.set(work.octets(), size);
    return KACERT_Ok;
}

} // namespace

int32_t KAsn1_IndefiniteToDefinite(const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength) {
    KA_FRAME("KAsn1_IndefiniteToDefinite");
    if ((input == nullptr && length > 0) || output == nullptr || outputLength == nullptr || length > INT32_MAX - Slack)
        return KAPKCS7_IndefiniteFormatErr;
    Work work = {KA_BLOCK(length + Slack), length, length + 1};
    if (work.block == nullptr)
        return KAPKCS7_IndefiniteFormatErr;
    if (length > 0)
        memcpy(work.octets(), input, length);
    KA_PASS(makeDefinite(work, {output, outputLength}));
    return KA_DONE();
}

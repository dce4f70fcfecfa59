#include "tests/fuzz/Grammar.h"

#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <cstring>

namespace
{

struct Tally
{
    unsigned long long inputs = 0;
    unsigned long long records = 0;
    ~Tally() { std::fprintf(stderr, "%llu records in %llu inputs\n", records, inputs); }
};

} // namespace

void countRecords(size_t records)
{
    static Tally tally;
    ++tally.inputs;
    tally.records += records;
}

QByteArray oneOf(Random &random, std::initializer_list<const char *> texts)
{
    return texts.begin()[random() % texts.size()];
}

QByteArray numberBelow(Random &random, unsigned limit)
{
    return QByteArray::number(qulonglong(random() % limit));
}

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t limit);

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t limit, unsigned seed)
{
    Random random(seed);
    if (random() % 2 == 0)
        return LLVMFuzzerMutate(data, size, limit);
    QByteArray input = validInput(random);
    if (random() % 2 == 0)
        input += bytesOf(data, size);
    size = std::min(size_t(input.size()), limit);
    std::memcpy(data, input.constData(), size);
    return random() % 2 == 0 ? LLVMFuzzerMutate(data, size, limit) : size;
}

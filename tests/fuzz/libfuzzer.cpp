// The main program is libFuzzer's; FUZZ_TARGET names the target to it and to the processes that it starts.
#include "fuzz.h"

#include <QApplication>

namespace {

FuzzTarget* target = nullptr;

QByteArray bytes(const std::uint8_t* data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), int(size));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    new QApplication(*argc, *argv); // to the end of the process, like the target
    target = fuzzTarget(qgetenv("FUZZ_TARGET")).release();
    std::atexit([] { std::_Exit(0); }); // nothing is taken down behind the statics of the libraries
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzzTake(*target, bytes(data, size));
    return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed)
{
    std::mt19937 random(seed);
    const unsigned way = unsigned(random() % 1000);
    if (way > 250 || size == 0) // what is random by bytes writes no "nan"
        return LLVMFuzzerMutate(data, size, std::min(most, std::max<std::size_t>(4096, 2 * size)));
    const QByteArray input = bytes(data, size);
    const QByteArray other = way > 0 ? fuzzMangled(input, input, random) : fuzzSwollen(input, random);
    const QByteArray fitting = other.left(int(most));
    std::copy(fitting.cbegin(), fitting.cend(), data);
    return std::size_t(fitting.size());
}

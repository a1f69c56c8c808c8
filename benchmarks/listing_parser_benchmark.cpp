#include "ftp/listing_parser.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <string>

// How fast listings are read, and how much of the heap that takes at most beside the listing itself.

namespace {

struct Heap {
    std::size_t held = 0;
    std::size_t most = 0;
};
Heap heap; // NOLINT: the operators below have nowhere else to count

} // namespace

// Not inlined, or the compiler takes what new and free do here for a mistake.

[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    heap.held += malloc_usable_size(block);
    heap.most = std::max(heap.most, heap.held);
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    heap.held -= block == nullptr ? 0 : malloc_usable_size(block);
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace {

using quillport::makeDateTime;
using quillport::ftp::ListingLine;
using quillport::ftp::ListingReader;

constexpr int lineCount = 100'000;
constexpr std::size_t portion = std::size_t{64} * 1024; // as the client receives it

std::string numbered(int number) {
    std::string digits = std::to_string(number);
    return std::string(6 - digits.size(), '0') + digits;
}

std::string listingOf(std::string (*line)(int number)) {
    std::string listing;
    for (int number = 0; number < lineCount; ++number) {
        listing += line(number) + "\r\n";
    }
    return listing;
}

std::string tableLine(int number) {
    return "  " + numbered(number) + "    Sep-30-2015  11:05:42   PointList" + numbered(number) + ".xml  ";
}
std::string unixLine(int number) {
    return "-rw-r--r--   1 root     root       " + numbered(number) + " Nov 18 19:55 PointList" +
           numbered(number) + ".xml";
}
std::string dosLine(int number) {
    return "04-11-18 19:55AM   " + numbered(number) + " PointList" + numbered(number) + ".xml";
}
std::string factsLine(int number) {
    return "type=file;size=" + numbered(number) + ";modify=20041118195501; PointList" + numbered(number) +
           ".xml";
}
std::string garbageLine(int number) {
    return "~~~~ 0xDEADBEEF this is no line of any format " + numbered(number);
}

/// Reads a listing as it comes over the wire.
std::size_t read(const std::string& listing) {
    std::size_t nameBytes = 0;
    ListingReader reader(
        makeDateTime(2018, 11, 20), [&](const ListingLine& entry) { nameBytes += entry.name.size(); },
        [](std::string_view) {});
    for (std::size_t start = 0; start < listing.size(); start += portion) {
        reader.feed(std::string_view(listing).substr(start, portion));
    }
    reader.finish();
    return nameBytes;
}

void readListing(benchmark::State& state, std::string (*line)(int number)) {
    const std::string listing = listingOf(line);
    const std::size_t before = heap.held;
    heap.most = heap.held;
    read(listing);
    const std::size_t taken = heap.most - before;
    for (auto step : state) {
        (void)step;
        benchmark::DoNotOptimize(read(listing));
    }
    state.counters["lines/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * lineCount, benchmark::Counter::kIsRate);
    state.counters["heap_bytes"] = static_cast<double>(taken);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(listing.size()));
}

BENCHMARK_CAPTURE(readListing, table, tableLine)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readListing, unix, unixLine)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readListing, dos, dosLine)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readListing, facts, factsLine)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readListing, garbage, garbageLine)->Unit(benchmark::kMillisecond);

} // namespace

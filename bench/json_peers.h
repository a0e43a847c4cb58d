// The readers that ours is compared with, in a separate source that is compiled for this machine's
// processor, and what all must find.
#ifndef BENCH_JSON_PEERS_H
#define BENCH_JSON_PEERS_H

#include <cstdint>
#include <string>

// What the callbacks of every contender add up.
struct Totals {
    uint64_t events = 0;  // begins, ends, keys and values
    uint64_t string_bytes = 0;
    uint64_t integers = 0;
    double decimals = 0;

    bool operator==(const Totals&) const = default;
    void text(size_t length) {
        events++;
        string_bytes += length;
    }
    void integer(uint64_t value) {
        events++;
        integers += value;
    }
    void decimal(double value) {
        events++;
        decimals += value;
    }
};

constexpr size_t PADDING_BYTES = 64;  // readable behind every document, as simdjson asks

struct Contender {
    const char* name;
    bool (*read)(const std::string& document, Totals* totals);  // false when it is rejected
};

extern const Contender PEERS[3];
std::string peer_kernels();

#endif

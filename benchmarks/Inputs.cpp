#include "benchmarks/Inputs.h"

#include <algorithm>
#include <set>

namespace om_bench {

namespace {

constexpr std::size_t BoxSide = 100;

Positions Box(std::size_t count) {
    Positions box(3);
    box.Reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        box.Add({static_cast<int>(i % BoxSide), static_cast<int>(i / BoxSide % BoxSide),
                 static_cast<int>(i / (BoxSide * BoxSide))});
    }
    return box;
}

Positions PastBox(Positions const& box, Random& random) {
    std::size_t const depth = (box.Size() + BoxSide * BoxSide - 1) / (BoxSide * BoxSide);
    std::vector<std::size_t> const extents = {BoxSide, BoxSide, depth};
    Positions past(3);
    past.Reserve(box.Size());
    std::vector<int> index(3);
    for (std::size_t i = 0; i < box.Size(); ++i) {
        box.Read(random.Below(box.Size()), index);
        std::size_t const beyond = random.Below(3);
        index[beyond] = static_cast<int>(extents[beyond] + random.Below(extents[beyond]));
        past.Add(index);
    }
    return past;
}

CellInputs BoxCells(Order order, std::size_t count) {
    Random random(11);
    Positions const box = Box(count);
    Positions const shuffled = box.Shuffled(random);
    Positions const& stored = order == Order::Shuffled ? shuffled : box;
    Positions const present = order == Order::Ordered ? stored : box.Shuffled(random);
    return {stored, present, PastBox(box, random)};
}

std::vector<int> SparseIndex(std::uint64_t code) {
    std::vector<int> index;
    for (int const extent : SparseExtents) {
        index.push_back(static_cast<int>(code % static_cast<std::uint64_t>(extent)));
        code /= static_cast<std::uint64_t>(extent);
    }
    return index;
}

CellInputs SparseCells(std::size_t count) {
    Random random(12);
    std::uint64_t places = 1;
    for (int const extent : SparseExtents) {
        places *= static_cast<std::uint64_t>(extent);
    }
    // Drawn with a few to spare for those drawn twice: the first half is stored, the second is absent.
    std::vector<std::uint64_t> codes(2 * count + count / 50 + 16);
    std::generate(codes.begin(), codes.end(), [&] { return random() % places; });
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    Shuffle(codes, random);

    Positions stored(SparseExtents.size());
    Positions absent(SparseExtents.size());
    stored.Reserve(count);
    absent.Reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        stored.Add(SparseIndex(codes[i]));
        absent.Add(SparseIndex(codes[count + i]));
    }
    return {stored, stored.Shuffled(random), absent};
}

} // namespace

std::vector<std::string> Words(std::size_t count, std::uint64_t seed) {
    Random random(seed);
    std::set<std::string> distinct;
    while (distinct.size() < count) {
        std::string word(8 + random.Below(5), ' ');
        std::generate(word.begin(), word.end(), [&] { return static_cast<char>('a' + random.Below(26)); });
        distinct.insert(word);
    }
    std::vector<std::string> words(distinct.begin(), distinct.end());
    Shuffle(words, random);
    return words;
}

std::deque<OmStringCell> OurTexts(std::vector<std::string> const& words) {
    std::deque<OmStringCell> texts;
    for (std::string const& word : words) {
        texts.emplace_back(word);
    }
    return texts;
}

std::deque<RivalString> RivalTexts(std::vector<std::string> const& words) {
    std::deque<RivalString> texts;
    for (std::string const& word : words) {
        texts.emplace_back(word);
    }
    return texts;
}

Positions Positions::Shuffled(Random& random) const {
    std::vector<std::uint32_t> order(Size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<std::uint32_t>(i);
    }
    Shuffle(order, random);
    Positions shuffled(_dimensions);
    shuffled.Reserve(order.size());
    std::vector<int> index(_dimensions);
    for (std::uint32_t const i : order) {
        Read(i, index);
        shuffled.Add(index);
    }
    return shuffled;
}

CellInputs MakeCells(Order order, std::size_t count) {
    return order == Order::Sparse ? SparseCells(count) : BoxCells(order, count);
}

} // namespace om_bench

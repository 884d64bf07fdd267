#include "backend/tables/om/detail/CellCursor.h"

using Cursor = OmPivotTable::Iterator::Data;

void Cursor::Seek(std::size_t level, std::uint64_t from) {
    cell = nullptr;
    while (level < levels.size()) {
        Level& here = levels[level];
        std::uint64_t const position = here.node->NextNonNull(from);
        if (position >= here.node->Length()) {
            ++level;
            from = level < levels.size() ? levels[level].position + 1 : 0;
            continue;
        }
        here.position = position;
        void* const entry = here.node->Entry(position);
        if (level == 0) {
            cell = static_cast<OmCellText*>(entry);
            return;
        }
        --level;
        levels[level].node = static_cast<PointerVector*>(entry);
        from = 0;
    }
}

OmPivotTable::Iterator::Iterator() : _data(nullptr) {}

OmPivotTable::Iterator::Iterator(Data* data) : _data(data) {}

OmPivotTable::Iterator::Iterator(Iterator const& other)
    : _data(other._data != nullptr ? new Data(*other._data) : nullptr) {}

OmPivotTable::Iterator& OmPivotTable::Iterator::operator=(Iterator const& other) {
    if (this != &other) {
        Data* const copy = other._data != nullptr ? new Data(*other._data) : nullptr;
        delete _data;
        _data = copy;
    }
    return *this;
}

OmPivotTable::Iterator::~Iterator() { delete _data; }

OmPivotTable::Iterator& OmPivotTable::Iterator::operator++() {
    if (_data != nullptr && _data->cell != nullptr) {
        _data->Seek(0, _data->levels[0].position + 1);
    }
    return *this;
}

OmCellText* OmPivotTable::Iterator::Cell() const { return _data != nullptr ? _data->cell : nullptr; }

std::vector<int> OmPivotTable::Iterator::Index() const {
    std::vector<int> index;
    if (_data != nullptr) {
        index.reserve(_data->levels.size());
        for (Data::Level const& level : _data->levels) {
            index.push_back(static_cast<int>(level.position));
        }
    }
    return index;
}

OmPivotTable::ConstIterator::ConstIterator() = default;

OmPivotTable::ConstIterator::ConstIterator(Iterator const& other) : _iterator(other) {}

OmPivotTable::ConstIterator& OmPivotTable::ConstIterator::operator++() {
    ++_iterator;
    return *this;
}

OmCellText const* OmPivotTable::ConstIterator::Cell() const { return _iterator.Cell(); }

std::vector<int> OmPivotTable::ConstIterator::Index() const { return _iterator.Index(); }

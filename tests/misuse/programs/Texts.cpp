// What programs do wrong with texts and the regions that they lie in.

#include "tests/misuse/programs/Misuse.h"

#include <cstddef>
#include <memory>
#include <optional>

using misuse::LongText;
using misuse::Read;
using misuse::Text;
using misuse::Use;
using misuse::Write;

namespace {

constexpr std::size_t Small = 40;
constexpr std::size_t Large = 5000;
// Past these the blocks of a class come from pages.
constexpr int ManyBlocks = 3000;

/// A block with others before and behind, from a page.
char* BlockInPage(OmMemoryRegion& region, std::size_t bytes) {
    for (int i = 0; i < ManyBlocks; ++i) {
        region.Allocate(bytes);
    }
    return static_cast<char*>(region.Allocate(bytes));
}

} // namespace

MISUSE(text_used_after_its_release) {
    OmMemoryRegion region(false);
    OmCellText const* const text = Text("label").Clone(&region);
    delete text;
    Use(*text);
}

MISUSE(text_used_after_its_region) {
    std::optional<OmMemoryRegion> region(std::in_place, false);
    OmCellText const* const text = Text("label").Clone(&*region);
    region->WorkingRelease(false);
    region.reset();
    Use(*text);
}

MISUSE(text_of_the_default_heap_used_after_its_release) {
    OmCellText const* const text = Text("label").Clone(nullptr);
    delete text;
    Use(*text);
}

MISUSE(text_deleted_after_its_region) {
    std::optional<OmMemoryRegion> region(std::in_place, false);
    OmCellText const* const text = Text("label").Clone(&*region);
    region.reset();
    delete text;
}

MISUSE(text_deleted_twice) {
    OmMemoryRegion region(false);
    OmCellText const* const text = Text("label").Clone(&region);
    delete text;
    delete text;
}

MISUSE(metadata_kept_after_its_replacement) {
    OmStringCell text = Text("label");
    OmCellMetaData data;
    data.style = 3;
    text.setMeta(&data);
    OmCellMetaData const* const kept = text.getMeta();
    text.setMeta(nullptr);
    Use(static_cast<std::size_t>(kept->style));
}

MISUSE(component_used_after_the_composite) {
    auto composite = std::make_unique<OmComposite>();
    OmCellText const* const part = composite->Append(LongText("part")).Value();
    composite.reset();
    Use(*part);
}

MISUSE(block_overrun) {
    OmMemoryRegion region(false);
    Write(static_cast<char*>(region.Allocate(Small)) + Small);
}

MISUSE(block_underrun) {
    OmMemoryRegion region(false);
    region.Allocate(Small);
    Write(static_cast<char*>(region.Allocate(Small)) - 1);
}

MISUSE(block_in_page_overrun) {
    OmMemoryRegion region(false);
    Write(BlockInPage(region, Small) + Small);
}

MISUSE(block_in_page_underrun) {
    OmMemoryRegion region(false);
    Write(BlockInPage(region, Small) - 1);
}

MISUSE(large_block_overrun) {
    OmMemoryRegion region(false);
    Write(static_cast<char*>(region.Allocate(Large)) + Large);
}

MISUSE(large_block_underrun) {
    OmMemoryRegion region(false);
    Write(static_cast<char*>(region.Allocate(Large)) - 1);
}

MISUSE(block_of_the_default_heap_overrun) {
    void* const block = OmMemoryRegion::DefaultHeap()->Allocate(Small);
    Write(static_cast<char*>(block) + Small);
    OmMemoryRegion::Release(block);
}

MISUSE(block_of_the_default_heap_underrun) {
    void* const block = OmMemoryRegion::DefaultHeap()->Allocate(Small);
    Write(static_cast<char*>(block) - 1);
    OmMemoryRegion::Release(block);
}

MISUSE(block_used_after_its_release) {
    OmMemoryRegion region(false);
    void* const block = region.Allocate(Small);
    OmMemoryRegion::Release(block);
    Write(block);
}

MISUSE(block_in_page_used_after_its_release) {
    OmMemoryRegion region(false);
    char* const block = BlockInPage(region, Small);
    OmMemoryRegion::Release(block);
    Read(block + Small - 1);
}

MISUSE(block_released_twice) {
    OmMemoryRegion region(false);
    void* const block = region.Allocate(Small);
    region.Allocate(Small);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(block);
}

MISUSE(block_released_twice_with_another_between) {
    OmMemoryRegion region(false);
    void* const block = region.Allocate(Small);
    void* const other = region.Allocate(Small);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(other);
    OmMemoryRegion::Release(block);
}

MISUSE(block_in_page_released_twice) {
    OmMemoryRegion region(false);
    void* const block = BlockInPage(region, Small);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(block);
}

MISUSE(large_block_released_twice) {
    OmMemoryRegion region(false);
    void* const block = region.Allocate(Large);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(block);
}

MISUSE(block_of_the_default_heap_released_twice) {
    void* const block = OmMemoryRegion::DefaultHeap()->Allocate(Small);
    OmMemoryRegion::Release(block);
    OmMemoryRegion::Release(block);
}

MISUSE(block_freed_with_the_global_delete) {
    OmMemoryRegion region(false);
    ::operator delete(region.Allocate(Small));
}

// --- what must not be reported ---------------------------------------------------------------------------------------

MISUSE(well_release_after_the_sweep) {
    OmMemoryRegion region(false);
    void* const small = region.Allocate(Small);
    void* const large = region.Allocate(Large);
    void* const inPage = BlockInPage(region, Small);
    region.WorkingRelease(false);
    for (void* block : {small, large, inPage}) {
        Read(block);
        OmMemoryRegion::Release(block);
        OmMemoryRegion::Release(block);
    }
}

MISUSE(well_text_destroyed_after_the_sweep) {
    OmMemoryRegion region(false);
    OmCellText* const text = LongText("label").Clone(&region);
    OmCellMetaData const data;
    text->setMeta(&data);
    region.WorkingRelease(false);
    delete text;
}

MISUSE(well_blocks_come_round_again) {
    OmMemoryRegion region(false);
    for (std::size_t bytes : {std::size_t{0}, std::size_t{1}, std::size_t{8}, Small, std::size_t{1016}, Large}) {
        for (int i = 0; i < ManyBlocks; ++i) {
            void* const kept = region.Allocate(bytes);
            void* const block = region.Allocate(bytes);
            if (bytes > 0) {
                Write(static_cast<char*>(block) + bytes - 1);
            }
            OmMemoryRegion::Release(block);
            if (i % 2 == 0) {
                OmMemoryRegion::Release(kept);
            }
        }
    }
    OmMemoryRegion::Release(nullptr);
}

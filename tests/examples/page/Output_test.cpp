#include "examples/page/Output.h"

#include "examples/crosstab/Failure.h"
#include "examples/page/HtmlPage.h"
#include "examples/page/HtmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

/// A folder that goes with the test.
class Folder {
public:
    Folder() {
        // mkdtemp puts letters of its own for the last six.
        std::string name = (fs::temp_directory_path() / "omtree-output-").string() + std::string(6, 'X');
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        _path = name;
    }
    ~Folder() { fs::remove_all(_path); }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    std::string at(char const* name) const { return (_path / name).string(); }
    std::size_t size() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(_path), fs::directory_iterator()));
    }

private:
    fs::path _path;
};

std::string contentOf(std::string const& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

TEST(Output, AFileIsReplacedAndNothingIsLeftBesideIt) {
    Folder const folder;
    page::writeFile(folder.at("page"), "first, and longer");
    page::writeFile(folder.at("page"), "second");
    EXPECT_EQ(contentOf(folder.at("page")), "second");
    EXPECT_EQ(folder.size(), 1U);
}

TEST(Output, ALinkStaysAndItsFileIsReplaced) {
    Folder const folder;
    page::writeFile(folder.at("file"), "first");
    fs::create_symlink("file", folder.at("link"));
    page::writeFile(folder.at("link"), "second");
    EXPECT_TRUE(fs::is_symlink(folder.at("link")));
    EXPECT_EQ(contentOf(folder.at("file")), "second");
    EXPECT_EQ(folder.size(), 2U);
}

// A file in its place would leave its reader waiting, and for a device do worse.
// Whose file it is cannot be known: it may be another process's, or lead anywhere.
TEST(Output, ATemporaryFileTakesNoNameThatIsThere) {
    Folder const folder;
    std::string const first = ".omtree-" + std::to_string(getpid()) + "-0";
    std::string const second = ".omtree-" + std::to_string(getpid()) + "-1";
    page::writeFile(folder.at(first.c_str()), "mine");
    page::writeFile(folder.at("other"), "mine");
    fs::create_symlink("other", folder.at(second.c_str()));
    page::writeFile(folder.at("page"), "text");
    EXPECT_EQ(contentOf(folder.at("page")), "text");
    EXPECT_EQ(contentOf(folder.at(first.c_str())), "mine");
    EXPECT_TRUE(fs::is_symlink(folder.at(second.c_str())));
    EXPECT_EQ(contentOf(folder.at("other")), "mine");
    EXPECT_EQ(folder.size(), 4U);
}

TEST(Output, HardLinksAndTheirModeStay) {
    Folder const folder;
    for (std::string const old : {"old", "old, and longer"}) {
        fs::remove(folder.at("other"));
        page::writeFile(folder.at("file"), old);
        fs::permissions(folder.at("file"), fs::perms::owner_read | fs::perms::owner_write);
        fs::create_hard_link(folder.at("file"), folder.at("other"));
        page::writeFile(folder.at("file"), "text");
        EXPECT_EQ(contentOf(folder.at("other")), "text");
        EXPECT_EQ(fs::hard_link_count(folder.at("file")), 2U);
        EXPECT_EQ(fs::status(folder.at("file")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(folder.size(), 2U);
    }
}

TEST(Output, AnEmptyTextEmptiesTheFile) {
    Folder const folder;
    page::writeFile(folder.at("file"), "first");
    page::writeFile(folder.at("file"), "");
    EXPECT_EQ(contentOf(folder.at("file")), "");
    fs::create_hard_link(folder.at("file"), folder.at("other"));
    page::writeFile(folder.at("file"), "second");
    page::writeFile(folder.at("file"), "");
    EXPECT_EQ(contentOf(folder.at("other")), "");
}

TEST(Output, AnEmptyNameIsAFailure) { EXPECT_THROW(page::writeFile("", "text"), crosstab::Failure); }

TEST(Output, APipeIsWrittenItself) {
    Folder const folder;
    ASSERT_EQ(mkfifo(folder.at("pipe").c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] { read = contentOf(folder.at("pipe")); });
    page::writeFile(folder.at("pipe"), "text");
    reader.join();
    EXPECT_EQ(read, "text");
    EXPECT_TRUE(fs::is_fifo(folder.at("pipe")));
    EXPECT_EQ(folder.size(), 1U);
}

TEST(Output, FailuresNameTheFileAndLeaveNothing) {
    Folder const folder;
    for (std::string const& name : {folder.at("nowhere/page"), folder.at(".")}) {
        try {
            page::writeFile(name, "text");
            ADD_FAILURE() << name;
        } catch (crosstab::Failure const& failure) {
            EXPECT_THAT(failure.what(), testing::StartsWith(name + ": "));
        }
    }
    EXPECT_EQ(folder.size(), 0U);
}

TEST(Output, LineBreaksOfEverySystemBecomeLineFeeds) {
    EXPECT_EQ(page::documentText("a\r\nb\rc\n\rd\r"), "a\nb\nc\n\nd\n");
}

TEST(Output, AHeadingWithoutATextCanBeClicked) {
    page::HtmlPage page("Title");
    page.heading(2, "");
    EXPECT_THAT(page.text(), testing::HasSubstr("<h2 id=\"part-1\">(untitled)</h2>"));
    EXPECT_THAT(page.text(), testing::HasSubstr("<a href=\"#part-1\">(untitled)</a>"));
}

} // namespace

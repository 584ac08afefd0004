// The example program examples/inventory, run as its users run it.

#ifdef KELVOFXDS_INVENTORY

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/runProgram.h"

namespace {

class inventoryProgram : public testing::Test {
protected:
    inventoryProgram() { fxInitializeToolkit(); }

    ProgramResult run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), stock);
        return inventory.run(arguments);
    }

    const TemporaryFolder folder;
    const std::string stock = folder / "stock";
    const Program inventory{KELVOFXDS_INVENTORY};
};

}  // namespace

TEST_F(inventoryProgram, withoutAFileThereIsNothing) {
    const ProgramResult result = run({});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.out + result.err);
    EXPECT_FALSE(std::filesystem::exists(stock));
}

TEST_F(inventoryProgram, countsWhatComesAndGoes) {
    EXPECT_EQ("    12 pears\n     3 figs\n", run({"figs", "3", "pears", "12"}).out);
    EXPECT_EQ("    12 pears\n     4 figs\n     4 plums\n", run({"plums", "4", "figs", "1"}).out);
    EXPECT_EQ("    10 pears\n     4 figs\n     4 plums\n", run({"pears", "-2"}).out);
    EXPECT_EQ("    10 pears\n     4 figs\n     4 plums\n", run({}).out);
}

TEST_F(inventoryProgram, whatIsUsedUpGoes) {
    run({"figs", "3", "pears", "12", "plums", "1"});
    EXPECT_EQ("    12 pears\n", run({"figs", "-3", "plums", "-1"}).out);
    fxRef<fxStrStrDictionary> left(fxLoadFile<fxStrStrDictionary>(stock.c_str()));
    ASSERT_TRUE(left);
    EXPECT_EQ(1U, left->length());
}

TEST_F(inventoryProgram, allIsBookedOrNothing) {
    run({"figs", "3"});
    const std::string before = bytesOf(stock);
    const struct {
        std::vector<std::string> bookings;
        const char* complaint;
    } cases[] = {{{"pears", "1", "figs", "-4"}, "inventory: there are 3 figs\n"},
                 {{"figs", "-2", "figs", "-2"}, "inventory: there are 1 figs\n"},
                 {{"plums", "-1"}, "inventory: there are 0 plums\n"},
                 {{"figs", "999999998"}, "inventory: there are 3 figs\n"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.complaint);
        const ProgramResult result = run(c.bookings);
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_EQ(c.complaint, result.err);
        EXPECT_EQ(before, bytesOf(stock));
    }
}

TEST_F(inventoryProgram, aFileThatIsNoStockIsRefused) {
    folder.file("stock", "pears 12\n");
    EXPECT_EQ(1, run({"figs", "1"}).status);
    EXPECT_EQ("pears 12\n", bytesOf(stock));

    fxStrStrDictionary strange;
    strange.add("pears", "many");
    ASSERT_TRUE(fxSaveFile(stock.c_str(), strange));
    EXPECT_EQ("inventory: \"many\" is no count of pears\n", run({"figs", "1"}).err);
}

TEST_F(inventoryProgram, helpTellsTheUsageAndWrongArgumentsDo) {
    const ProgramResult help = inventory.run({"--help"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(0U, help.out.find("usage: inventory "));
    const std::vector<std::string> wrong[] = {
        {"figs"}, {"figs", "many"}, {"figs", "1x"}, {"", "1"}, {"figs", "99999999999"}};
    for (const auto& arguments : wrong) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_EQ(help.out, result.err);
    }
    EXPECT_EQ(2, inventory.run({}).status);
}

#endif

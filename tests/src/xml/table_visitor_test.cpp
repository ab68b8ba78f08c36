// SPDX-License-Identifier: Apache-2.0
// Visitors with a table of their elements: who is called, what is unexpected, and what leaving an element may
// refuse.
#include "TableVisitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tinyxml2::XMLElement;
using xml::any_name;
using xml::anywhere;
using xml::call;
using xml::descend;
using xml::ElementRow;
using xml::outermost;
using xml::skip;
using xml::TableVisitor;
using enum xml::Occurrence;

// Notes the calls of its handlers. <list> holds one <head> and any <item>, an <item> any other elements;
// <read> may stand anywhere.
class ShelfVisitor : public TableVisitor {
  public:
    explicit ShelfVisitor(xml::VisitorCallbacks* callbacks) : TableVisitor(elements(), callbacks, false) {}

    using TableVisitor::count_of;
    using TableVisitor::expect_no_attributes;
    using TableVisitor::expect_once;
    using TableVisitor::m_elem_stack;
    using TableVisitor::m_has_error;

    std::vector<std::string> calls;
    bool leaves_items = true;

  private:
    static Rows elements() {
        using Self = ShelfVisitor;
        static constexpr ElementRow rows[] = {
            {"list", outermost, any, descend},
            {"head", "list", once, call<&Self::visit_head>},
            {"item", "list", any, call<&Self::visit_item>, call<&Self::leave_item>},
            {"read", anywhere, any, skip},
            {any_name, "list/item", any, call<&Self::visit_other>},
        };
        return rows;
    }

    bool note(const std::string& call_, const XMLElement& elem) {
        calls.push_back(call_ + " " + elem.Value());
        return true;
    }
    bool visit_head(const XMLElement& elem) { return note("head", elem); }
    bool visit_item(const XMLElement& elem) { return note("item", elem); }
    bool leave_item(const XMLElement& elem) { return note("leave", elem) && leaves_items; }
    bool visit_other(const XMLElement& elem) { return note("other", elem); }
};

struct ShelfWalk {
    explicit ShelfWalk(const std::string& text) : result(parsed(text)->Accept(&visitor)) {}

    RecordingCallbacks callbacks;
    ShelfVisitor visitor{&callbacks};
    bool result;
};

std::string unexpected(const std::string& name) {
    return "Error in 'a.xml', line 1\nUnexpected element '" + name + "'.\n";
}

TEST(TableVisitor, CallsTheHandlersOfTheElementsInTheirOrder) {
    const ShelfWalk walk("<list><item/><head/><item/></list>");
    EXPECT_TRUE(walk.result);
    EXPECT_THAT(walk.visitor.calls,
                ElementsAre("item item", "leave item", "head head", "item item", "leave item"));
    EXPECT_THAT(walk.callbacks.errors, IsEmpty());
}

TEST(TableVisitor, AnUnknownNameIsUnexpected) {
    const ShelfWalk walk("<list><Item/></list>");
    EXPECT_FALSE(walk.result);
    EXPECT_THAT(walk.visitor.calls, IsEmpty());
    EXPECT_THAT(walk.callbacks.errors, ElementsAre(unexpected("Item")));
}

TEST(TableVisitor, AKnownNameInAnotherPlaceIsUnexpected) {
    EXPECT_THAT(ShelfWalk("<item/>").callbacks.errors, ElementsAre(unexpected("item")));
    EXPECT_THAT(ShelfWalk("<list><list/></list>").callbacks.errors, ElementsAre(unexpected("list")));
    EXPECT_THAT(ShelfWalk("<list><head><item/></head></list>").callbacks.errors,
                ElementsAre(unexpected("item")));
    // A row of that name decides before the one of any name.
    EXPECT_THAT(ShelfWalk("<list><item><head/></item></list>").callbacks.errors,
                ElementsAre(unexpected("head")));
}

TEST(TableVisitor, ARowOfAnyNameHoldsInItsPlaceOnly) {
    const ShelfWalk walk("<list><item><a/><b/></item></list>");
    EXPECT_TRUE(walk.result);
    EXPECT_THAT(walk.visitor.calls, ElementsAre("item item", "other a", "other b", "leave item"));
    EXPECT_THAT(ShelfWalk("<list><item><a><b/></a></item></list>").callbacks.errors,
                ElementsAre(unexpected("b")));
    EXPECT_THAT(ShelfWalk("<other/>").callbacks.errors, ElementsAre(unexpected("other")));
}

TEST(TableVisitor, TheChildrenOfASkippedElementAreNotVisited) {
    const ShelfWalk walk("<list><read><unknown/></read><item><read/></item></list>");
    EXPECT_TRUE(walk.result);
    EXPECT_THAT(walk.visitor.calls, ElementsAre("item item", "leave item"));
    EXPECT_EQ(walk.visitor.count_of("list/read"), 1u);
    EXPECT_EQ(walk.visitor.count_of("list/read/unknown"), 0u);
}

TEST(TableVisitor, AnElementThatMayStandOnceIsRefusedTheSecondTime) {
    const ShelfWalk walk("<list><head/><head/></list>");
    EXPECT_FALSE(walk.result);
    EXPECT_THAT(walk.visitor.calls, ElementsAre("head head"));
    EXPECT_THAT(walk.callbacks.errors,
                ElementsAre("Error in 'a.xml', line 1\nExpected element <head> to appear exactly once.\n"));
}

TEST(TableVisitor, AnElementIsNotLeftAfterAnError) {
    const ShelfWalk walk("<list><item><head/></item></list>");
    EXPECT_THAT(walk.visitor.calls, ElementsAre("item item"));
}

TEST(TableVisitor, ARefusalWithoutAReportLeavesTheElementOpen) {
    ShelfVisitor visitor(nullptr);
    visitor.leaves_items = false;
    const auto doc = parsed("<list><item/></list>");
    const XMLElement* list = doc->RootElement();
    EXPECT_TRUE(visitor.VisitEnter(*list, nullptr));
    EXPECT_TRUE(visitor.VisitEnter(*list->FirstChildElement(), nullptr));
    EXPECT_TRUE(visitor.VisitExit(*list->FirstChildElement()));
    EXPECT_FALSE(visitor.m_has_error);
    EXPECT_THAT(visitor.m_elem_stack, ElementsAre("list", "item"));
}

TEST(TableVisitor, CountsByPath) {
    ShelfWalk walk("<list><item/><head/><item/></list>");
    EXPECT_EQ(walk.visitor.count_of("list/item"), 2u);
    EXPECT_EQ(walk.visitor.count_of("item"), 0u);
    const auto doc = parsed("<list/>");
    EXPECT_TRUE(walk.visitor.expect_once(*doc->RootElement(), "list/head"));
    EXPECT_FALSE(walk.visitor.expect_once(*doc->RootElement(), "list/item"));
    EXPECT_FALSE(walk.visitor.expect_once(*doc->RootElement(), "list/none"));
    const std::string message = "Error in 'a.xml', line 1\nExpected element <list> to appear exactly once.\n";
    EXPECT_THAT(walk.callbacks.errors, ElementsAre(message, message));
}

TEST(TableVisitor, AnElementWithoutAttributesReportsEachThatItHas) {
    ShelfWalk walk("<list/>");
    EXPECT_TRUE(walk.visitor.expect_no_attributes(*parsed("<x/>")->RootElement()));
    EXPECT_FALSE(walk.visitor.expect_no_attributes(*parsed("<x a='' b=''/>")->RootElement()));
    EXPECT_THAT(walk.callbacks.errors, ElementsAre("Error in 'a.xml', line 1\nUnexpected attribute 'a'.\n",
                                                   "Error in 'a.xml', line 1\nUnexpected attribute 'b'.\n"));
}

} // namespace
} // namespace zan::test

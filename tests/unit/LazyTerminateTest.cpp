#include "bib/LazyTerminate.h"

#include "bib/BIBStream.h"
#include "bib/POSValidator.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace BIB_T_NMT {

namespace {

std::string gCalls;

// Writes its name into gCalls: upper case for Initialize, lower case for Terminate.
class Recorder : public LazyTerminate {
public:
    enum Outcome { kGood, kFails, kThrows };

    Recorder(char name, Outcome outcome) : fName(name), fOutcome(outcome) {}

    bool Initialize() override {
        gCalls += static_cast<char>(fName - 'a' + 'A');
        if (fOutcome == kThrows) {
            throw 1;
        }
        return fOutcome == kGood;
    }

    void Terminate() override { gCalls += fName; }

private:
    char fName;
    Outcome fOutcome;
};

class Element : public double_linked_list_element<Element, BIBDLLEParent> {
public:
    explicit Element(List& list, bool atEnd = false) : double_linked_list_element(list, atEnd) {}
};

std::vector<Element*> ElementsOf(Element::List const& list) {
    std::vector<Element*> elements;
    for (auto* element = list.GetFirstElement(); element != nullptr;
         element = element->GetNextElement()) {
        elements.push_back(element);
    }
    return elements;
}

} // namespace

TEST(LazyTerminate, InitializesUpToAFailureAndTerminatesWhatCameBeforeOrAll) {
    struct {
        int fFailing; // of five, counted from 0; -1 for none
        Recorder::Outcome fOutcome;
        char const* fCalls;
    } const kCases[] = {
        {-1, Recorder::kGood, "ABCDE"},
        {2, Recorder::kFails, "ABCab"},
        {2, Recorder::kThrows, "ABCab"},
        {0, Recorder::kFails, "A"},
        {4, Recorder::kThrows, "ABCDEabcd"},
    };
    for (auto const& row : kCases) {
        gCalls.clear();
        std::vector<std::unique_ptr<Recorder>> recorders;
        for (int i = 4; i >= 0; --i) { // the newest comes first
            recorders.push_back(std::make_unique<Recorder>(
                static_cast<char>('a' + i), i == row.fFailing ? row.fOutcome : Recorder::kGood));
        }
        EXPECT_EQ(row.fFailing < 0, LazyTerminate::InitializeAll()) << row.fCalls;
        EXPECT_EQ(row.fCalls, gCalls);
        gCalls.clear();
        LazyTerminate::TerminateAll();
        EXPECT_EQ("abcde", gCalls);
    }
}

TEST(LazyTerminate, HoldsTheClientsCachesNewestFirst) {
    LazyTerminate* const kNewestFirst[] = {
        &CPOSValidator::GetTerm(),
        &CPOSObject::GetTerm(),
        &CBIBPositionableStream::GetPositionableTerm(),
        &CBIBRewindableStream::GetRewindableTerm(),
        &CBIBSimpleStream::GetSimpleTerm(),
        &TBIB2VTabList<BIBDataBlockStreamInterface>::fVTabList,
        &TBIB2VTabList<BIBSizedDataStoreInterface>::fVTabList,
        &TBIB2VTabList<BIBDataStoreInterface>::fVTabList,
    };
    auto* object = LazyTerminate::GetList().GetFirstElement();
    for (auto* const expected : kNewestFirst) {
        ASSERT_EQ(expected, object);
        object = object->GetNextElement();
    }
    EXPECT_EQ(nullptr, object);
}

TEST(DoubleLinkedList, LinksAtBothEndsAndUnlinksAnywhere) {
    Element::List list{};
    EXPECT_EQ(nullptr, list.GetLastElement());
    std::optional<Element> first(std::in_place, list);
    std::optional<Element> head(std::in_place, list);
    Element last(list, /*atEnd=*/true);
    EXPECT_EQ((std::vector{&*head, &*first, &last}), ElementsOf(list));
    EXPECT_EQ(&last, list.GetLastElement());
    first->Remove();
    EXPECT_EQ((std::vector{&*head, &last}), ElementsOf(list));
    first->Add(/*atEnd=*/true);
    EXPECT_EQ((std::vector{&*head, &last, &*first}), ElementsOf(list));
    head.reset();
    first.reset();
    EXPECT_EQ(std::vector{&last}, ElementsOf(list));
    list.ForgetElements();
    EXPECT_EQ(nullptr, list.GetFirstElement());
    EXPECT_EQ(1U, list.GetElementCount());
}

} // namespace BIB_T_NMT

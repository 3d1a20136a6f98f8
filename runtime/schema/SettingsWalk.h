// Judging a value and all that lies in it.
#pragma once

#include "runtime/schema/SchemaRule.h"

namespace bibrt {

// Uses no more stack for deeper nesting, and time in proportion to what the schema knows of the
// value, in which a part that lies in several places counts for each. Ends with a message at a
// value that contains itself.
class SettingsWalk {
public:
    SettingsWalk(POSValidator const& validator, MessageSink& sink, JudgeMode mode) noexcept
        : fValidator(validator),
          fSink(sink),
          fMode(mode) {}

    // Judges value by rule. Its own faults stand under path, and those of what lies in it behind
    // pathInside. Throws what callbacks throw, and std::bad_alloc.
    void Judge(
        SchemaRule const& rule,
        POSObject& value,
        std::string_view path,
        std::string_view pathInside);

private:
    // A dictionary on its way through the rules of its structure, or an array through its elements.
    struct Frame {
        POSObject* fSource;
        std::size_t fPosition;
        BIBStringAtom* fKey; // of the setting that is being judged; for elements, of their array
        POSDict* fStructure; // null for an array
        POSDict* fRules;     // the structure or its optional part
        bool fIsOptional;    // which of the two
        POSObject* fElement; // the rule of the elements; null for a dictionary
    };

    void Step();
    void StepArray(Frame& frame);
    void StepDict(Frame& frame);
    void JudgeSetting(Frame& frame, DictEntry const& entry);
    void JudgeBy(POSObject& ruleSource, POSObject* value);
    void Judge(SchemaRule const& rule, POSObject& value);
    bool PassesType(SchemaRule const& rule, POSObject& value);
    bool PassesParts(SchemaRule const& rule, POSObject& value);
    bool PassesCheck(Check const& check, POSObject const& name, POSObject& value);
    void Enter(SchemaRule const& rule, POSObject& value);
    void EnterDict(POSDict& structure, POSObject& value);
    void Push(Frame const& frame);
    BIBStringAtom* Key() noexcept;
    void Report(std::string_view text) const;
    String Path() const;

    POSValidator const& fValidator;
    MessageSink& fSink;
    JudgeMode fMode;
    std::string_view fPath;
    std::string_view fPathInside;
    WalkStack<Frame> fStack;
    bool fIsCircle = false;
};

} // namespace bibrt

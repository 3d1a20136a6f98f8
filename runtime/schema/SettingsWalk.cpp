// Validates a value and everything inside it.
#include "runtime/objects/Errors.h"
#include "runtime/objects/SharedBuffers.h"
#include "runtime/schema/Schema.h"
#include "runtime/schema/SchemaText.h"
#include "runtime/schema/SettingRules.h"

#include <cstring>

namespace bibrt {

namespace {

constexpr unsigned long kMessageSize = 256;

// An empty message buffer for a check.
BufferRef MakeMessageBuffer() {
    BufferRef buffer(NewObjectWith<BIBSharedBuffer>(kMessageSize, nullptr, kMessageSize, nullptr));
    std::memset(buffer->fData, 0, kMessageSize);
    return buffer;
}

// The message of a check: up to a zero byte, or the whole buffer.
std::string_view MessageIn(BIBSharedBuffer const& buffer) noexcept {
    std::string_view const all(static_cast<char const*>(buffer.fData), kMessageSize);
    return all.substr(0, all.find('\0'));
}

std::string_view TextIn(BIBStringAtom const* atom) noexcept {
    return atom->fText;
}

// The walk. It uses no more stack for deeper nesting. Its time is linear in the size of the parts
// that the schema has rules for; a part that occurs several times counts each time. A value that
// contains itself ends the walk with a message.
class SettingsWalk {
public:
    SettingsWalk(POSValidator const& validator, MessageSink& sink, ValidationMode mode) noexcept
        : fValidator(validator),
          fSink(sink),
          fMode(mode) {}

    void Validate(
        SchemaRule const& rule,
        POSObject& value,
        std::string_view path,
        std::string_view pathInside) {
        fPath = path;
        fPathInside = pathInside;
        Validate(rule, value);
        while (!fStack.IsEmpty() && !fIsCircle) {
            Frame& frame = fStack.Top();
            if (frame.fElement) {
                StepArray(frame);
            } else {
                StepDict(frame);
            }
        }
    }

private:
    // A dictionary with the position among the rules of its structure, or an array with the
    // position among its elements.
    struct Frame {
        POSObject* fSource;
        std::size_t fPosition;
        BIBStringAtom* fKey; // of the current setting; for elements, of their array
        POSDict* fStructure; // null for an array
        POSDict* fRules;     // the current one: fStructure or its optional part
        bool fIsOptional;    // whether fRules is the optional part
        POSObject* fElement; // the rule of the elements; null for a dictionary
    };

    void StepArray(Frame& frame) {
        if (POSObject* const element = NextChild(*frame.fSource, frame.fPosition).fValue) {
            ValidateBy(*frame.fElement, element);
        } else {
            fStack.Pop();
        }
    }

    void StepDict(Frame& frame) {
        if (DictEntry const* const entry = frame.fRules->fEntries.Next(frame.fPosition)) {
            ValidateSetting(frame, *entry);
            return;
        }
        POSObject* const optional = FindPart(*frame.fStructure, kOptional);
        if (!optional || frame.fIsOptional) {
            fStack.Pop();
            return;
        }
        frame.fRules = static_cast<POSDict*>(optional);
        frame.fIsOptional = true;
        frame.fPosition = 0;
    }

    // Validates the setting of one rule of a structure or of its optional part.
    void ValidateSetting(Frame& frame, DictEntry const& entry) {
        bool const isRequired = !frame.fIsOptional;
        bool const isWordOptional = TextIn(entry.fKey) == kOptional;
        if (isRequired ? isWordOptional
                       : !isWordOptional && frame.fStructure->fEntries.Get(entry.fKey)) {
            return;
        }
        frame.fKey = entry.fKey;
        POSObject* const value = static_cast<POSDict*>(frame.fSource)->fEntries.Get(entry.fKey);
        if (value || isRequired) {
            ValidateBy(*entry.fValue, value);
        }
    }

    // Reads the rule and validates value, which is null for a missing setting.
    void ValidateBy(POSObject& ruleSource, POSObject* value) {
        RuleProblems problems;
        SchemaRule const rule = ReadRule(fValidator, ruleSource, problems);
        if (!problems.empty()) {
            // The check of the schema itself reports this.
            if (fMode == ValidationMode::kSettings) {
                Report(Join({"cannot be validated: the schema ", problems.front().fText}));
            }
        } else if (value) {
            Validate(rule, *value);
        } else {
            Report(TypeMessage(rule, "nothing"));
        }
    }

    void Validate(SchemaRule const& rule, POSObject& value) {
        if (PassesType(rule, value)) {
            CheckParts(rule, value);
            Enter(rule, value);
        }
    }

    bool PassesType(SchemaRule const& rule, POSObject& value) {
        if (!IsOfRuleType(rule, value, fMode)) {
            Report(TypeMessage(rule, FoundText(value)));
            return false;
        }
        return rule.fType != RuleType::kCheck ||
               PassesCheck(rule.fTypeCheck, *rule.Part(RuleKey::kType), value);
    }

    void CheckParts(SchemaRule const& rule, POSObject& value) {
        String const message = PartsMessage(rule, value);
        if (!message.empty()) {
            Report(message);
        } else if (rule.fExtraCheck.fProc) {
            PassesCheck(rule.fExtraCheck, *rule.Part(RuleKey::kCheck), value);
        }
    }

    bool PassesCheck(Check const& check, POSObject const& name, POSObject& value) {
        if (fMode == ValidationMode::kDefaults) {
            return true;
        }
        BufferRef const buffer = MakeMessageBuffer();
        fSink.fIsInCaller = true;
        bool const isAccepted = check.fProc(&value, Key(), buffer.get(), check.fUserData) != 0;
        fSink.fIsInCaller = false;
        if (isAccepted) {
            return true;
        }
        std::string_view const message = MessageIn(*buffer);
        Report(message.empty() ? CheckMessage(name, FoundText(value)) : String(message));
        return false;
    }

    void Enter(SchemaRule const& rule, POSObject& value) {
        if (rule.fType == RuleType::kStructure) {
            EnterDict(*rule.fStructure, value);
        } else if (POSObject* const element = rule.Part(RuleKey::kOf)) {
            Push({&value, 0, Key(), nullptr, nullptr, /*fIsOptional=*/false, element});
        }
    }

    void EnterDict(POSDict& structure, POSObject& value) {
        POSObject const* const optional = FindPart(structure, kOptional);
        if (optional && KindOf(*optional) != ValueKind::kDictionary) {
            Report(Join(
                {"cannot be validated: the schema says ",
                 FoundText(*optional),
                 ", which is not a dictionary"}));
            return;
        }
        Push({&value, 0, nullptr, &structure, &structure, /*fIsOptional=*/false, nullptr});
    }

    void Push(Frame const& frame) {
        if (!fStack.Push(frame)) {
            Report("cannot be validated: it contains itself");
            fIsCircle = true;
        }
    }

    // The key of the current setting; null for the root.
    BIBStringAtom* Key() noexcept { return fStack.IsEmpty() ? nullptr : fStack.Top().fKey; }

    void Report(std::string_view text) const { fSink.Report(Path(), text); }

    // Builds only the steps that a message shows, so a message takes the same time at any depth.
    String Path() const {
        Vector<Frame> const& frames = fStack.Frames();
        std::size_t step = frames.size();
        for (std::size_t length = 0; step > 0 && length <= kMaxPathLength + 1;) {
            --step;
            length += 1 + (frames[step].fElement ? 1 : frames[step].fKey->fText.size());
        }
        String path(PathEnd(frames.empty() ? fPath : fPathInside));
        for (; step < frames.size(); ++step) {
            if (frames[step].fElement) {
                AppendIndexStep(path, frames[step].fPosition - 1);
            } else {
                AppendKeyStep(path, TextIn(frames[step].fKey));
            }
        }
        return path;
    }

    POSValidator const& fValidator;
    MessageSink& fSink;
    ValidationMode fMode;
    std::string_view fPath;
    std::string_view fPathInside;
    WalkStack<Frame> fStack;
    bool fIsCircle = false;
};

// Passes on the errors among the findings of rules between settings.
class ErrorListener final : public RuleListener {
public:
    explicit ErrorListener(MessageSink& sink) noexcept : fSink(sink) {}

    void OnFinding(RuleFinding const& finding) override {
        if (!finding.fIsWarning) {
            fSink.Report(finding.fPath, finding.fText);
        }
    }

private:
    MessageSink& fSink;
};

} // namespace

void ValidateValue(
    POSValidator const& validator,
    MessageSink& sink,
    ValidationMode mode,
    SchemaRule const& rule,
    POSObject& value,
    std::string_view path,
    std::string_view pathInside) {
    SettingsWalk(validator, sink, mode).Validate(rule, value, path, pathInside);
}

void ValidateSettings(
    POSValidator const& validator, POSObject& object, BIBStringAtom& structure, MessageSink& sink) {
    SchemaRule rule;
    rule.fType = RuleType::kStructure;
    rule.fStructure = validator.FindStructure(&structure);
    String path;
    AppendKeyStep(path, TextIn(&structure));
    if (!rule.fStructure) {
        sink.Report(path, "cannot be validated: the schema has no such structure");
        return;
    }
    ValidateValue(validator, sink, ValidationMode::kSettings, rule, object, path, {});
    if (&structure == validator.FindMainName()) {
        ErrorListener listener(sink);
        CheckRulesBetween(validator, object, listener);
    }
}

} // namespace bibrt

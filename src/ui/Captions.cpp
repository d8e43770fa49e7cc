#include "ui/Captions.h"

#include "database/OpenRecordset.h"
#include "database/adoModul.h"
#include "frame/KillProcess.h"
#include "frame/ProgramVariables.h"
#include "langtools/CTools.h"
#include "langtools/RuntimeError.h"
#include "ui/FormAccess.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

constexpr TextView kModule = u"Nomira";

// ---- Where a word goes ----

using Target = void (*)(const Form& form, TextView sControl, TextView sWord);

template <Text& sVariable>
void ToVariable(const Form&, TextView, TextView sWord) {
    sVariable = sWord;
}

template <typename Kind>
void ToCaption(const Form& form, TextView sControl, TextView sWord) {
    form.Get<Kind>(sControl).SetCaption(sWord);
}

void ToTextBox(const Form& form, TextView sControl, TextView sWord) {
    form.Get<TextBox>(sControl).SetText(sWord);
}

// ---- The words ----

struct Word {
    TextView sFirstKey;
    TextView sJoint;      // between the two texts
    TextView sSecondKey;  // empty for a word that is one text
    TextView sEnglish;
    Target target;
    TextView sControl;
};

constexpr Word Single(TextView sKey, TextView sEnglish, Target target, TextView sControl = {}) {
    return {sKey, {}, {}, sEnglish, target, sControl};
}

// In the order in which they are read. The joints are never translated.
constexpr Word kWords[] = {
    Single(u"DatabaseView", u"DatabaseView", ToVariable<g_sDatabaseViewCaption>),
    Single(u"LongTextConversion", u"LongTextConversion", ToTextBox, u"Text2"),
    {u"LongText", u" -> ", u"Database", u"LongText -> Database", ToCaption<RadioButton>,
     u"Option1"},
    {u"Database", u" -> ", u"LongText", u"Database -> LongText", ToCaption<RadioButton>,
     u"Option2"},
    {u"LongText", u" (IO's) -> ", u"UserProgram", u"LongText (IO's) -> UserProgram",
     ToCaption<RadioButton>, u"Option3"},
    Single(u"AddToDatabase", u"AddToDatabase", ToCaption<CheckBox>, u"chkBoxAdd"),
    Single(u"SelectAllFiles", u"SelectAllFiles", ToCaption<CheckBox>, u"chkBoxSelAll"),
    Single(u"WithSymbol", u"WithSymbol", ToCaption<CheckBox>, u"chkBoxSymbol"),
    Single(u"EnterName", u"please enter a name", ToVariable<g_sMsgEnterName>),
    Single(u"SelectFile", u"select one file at least", ToVariable<g_sMsgSelectFile>),
    Single(u"DeviceUnavailable", u"Device not ready", ToVariable<g_sMsgDeviceUnavailable>),
};

// The texts of the catalogue, if there is one, in the language's code page.
class Dictionary {
  public:
    explicit Dictionary(std::int32_t nLanguageId)
        : m_texts(ReadCatalogueModule(kModule, nLanguageId)) {
        g_Tools().Str2Long(GetLocaleCodePage(nLanguageId), m_nCodePage);
    }

    // Raises as LookUp does.
    Text Compose(const Word& word) const {
        Text sWord = LookUp(word.sFirstKey);
        if (word.sSecondKey.empty()) return sWord;
        return sWord.append(word.sJoint).append(LookUp(word.sSecondKey));
    }

  private:
    // Raises ObjectNotSet without a catalogue, InvalidProcedureCall for a key that it hasn't.
    Text LookUp(TextView sKey) const {
        if (!m_texts) Raise(ErrorNumber::ObjectNotSet);
        const auto found = m_texts->find(Text(sKey));
        if (found == m_texts->end()) Raise(ErrorNumber::InvalidProcedureCall);
        return RedecodeText(m_nCodePage, found->second);
    }

    std::optional<Catalogue> m_texts;
    std::int32_t m_nCodePage = 0;
};

void SetWord(const Form& form, const Dictionary& dictionary, const Word& word) {
    try {
        word.target(form, word.sControl, dictionary.Compose(word));
    } catch (const RuntimeError&) {
        word.target(form, word.sControl, word.sEnglish);
    }
}

// ---- The catalogue ----

void AddRow(Catalogue& texts, const OpenRecordset& read) {
    FieldValue text = read->Field(u"String");
    FieldValue key = read->Field(u"KeyString");
    if (IsNull(text) || IsNull(key)) return;
    Text sText = ToText(std::move(text));
    if (!texts.emplace(ToText(std::move(key)), std::move(sText)).second)
        Raise(ErrorNumber::KeyAlreadyUsed);
}

Catalogue ReadTexts(TextView sStatement) {
    Catalogue texts;
    const OpenRecordset read(sStatement, g_Connection.get(), CursorKind::Static,
                             LockKind::ReadOnly);
    if (!(read->Bof() && read->Eof())) {
        read->MoveFirst();
        for (; !read->Eof(); read->MoveNext())
            AddRow(texts, read);
    }
    read->Close();
    return texts;
}

}  // namespace

std::optional<Catalogue> ReadCatalogueModule(TextView sModule, std::int32_t nLanguageId) {
    try {
        OpenDatabase(kCatalogueDatabase);
        Catalogue texts = ReadTexts(CatalogueReadStatement(sModule, nLanguageId));
        CloseDatabase();
        if (!texts.empty()) return texts;
    } catch (const RuntimeError&) {  // whatever it is, there is no catalogue
    }
    return std::nullopt;
}

void LoadCaptions() {
    const Form* form = FindForm(kStdBofFormClass);
    if (!form) Raise(ErrorNumber::ObjectNotSet);
    const Dictionary dictionary(g_nLanguageId);
    for (const Word& word : kWords)
        SetWord(*form, dictionary, word);
}

}  // namespace nomira

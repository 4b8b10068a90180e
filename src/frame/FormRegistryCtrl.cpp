#include "frame/FormRegistryCtrl.h"

namespace Qel {

namespace {

/// Made at the first use, so that it outlives whatever made it first.
struct Registry
{
    std::unique_ptr<TFormLibrary> library;
    int initialisations = 0;
};

Registry &TheRegistry()
{
    static Registry registry;
    return registry;
}

} // namespace

const TFormEntry *TFormLibrary::GetEntry(int index) const
{
    if (index < 0 || index >= Count())
        return nullptr;
    return forms_[static_cast<std::size_t>(index)].entry.get();
}

const TFormEntry *TFormLibrary::FindByName(const QString &name) const
{
    for (int index = 0; index < Count(); ++index) {
        if (Caption(index).compare(name, Qt::CaseInsensitive) == 0)
            return GetEntry(index);
    }
    return nullptr;
}

void TFormLibrary::Add(const TFormClass &formClass, const QString &formCode,
                       const QString &formName, const QString &paramValue, const QString &fnKeyList,
                       bool beginGroup)
{
    forms_.push_back({formName, std::make_unique<TFormEntry>(TFormEntry{
                                    formClass, formCode, paramValue, fnKeyList, beginGroup})});
}

QString TFormLibrary::Caption(int index) const
{
    if (index < 0 || index >= Count())
        return {};
    return forms_[static_cast<std::size_t>(index)].caption;
}

TFormLibrary *FormLibrary()
{
    return TheRegistry().library.get();
}

void CreateFormLibrary()
{
    if (++TheRegistry().initialisations == 1)
        TheRegistry().library = std::make_unique<TFormLibrary>();
}

void DestroyFormLibrary()
{
    if (--TheRegistry().initialisations == 0)
        TheRegistry().library.reset();
}

void RegisterForm(const TFormClass &formClass, const QString &formCode, const QString &formName,
                  bool beginGroup, const QString &paramValue, const QString &fnKeyList)
{
    FormLibrary()->Add(formClass, formCode, formName, paramValue, fnKeyList, beginGroup);
}

} // namespace Qel

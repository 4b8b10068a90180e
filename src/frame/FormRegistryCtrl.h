#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QWidget;

namespace Qel {

class TFrmBaseForm;

/// A screen's class: its name, and how to make one under an owner (which frees it).
struct TFormClass
{
    QString ClassName;
    std::function<TFrmBaseForm *(QWidget *owner)> Create;
};

/// One registered screen.
struct TFormEntry
{
    TFormClass FormClass;
    QString FormCode;
    QString ParamValue;
    QString FnKeyList;
    bool BeginGroup = false; ///< starts a new group in the host's menu
};

/// The registry of screens, in the order of registration; captions may repeat and are compared
/// without regard to case. Owns its entries, which never change.
class TFormLibrary
{
public:
    TFormLibrary() = default;
    virtual ~TFormLibrary() = default;
    Q_DISABLE_COPY_MOVE(TFormLibrary)

    /// Null outside 0 .. Count()-1.
    virtual const TFormEntry *GetEntry(int index) const;

    int Count() const { return static_cast<int>(forms_.size()); }
    /// The first entry with this caption (never a code); null if there is none.
    const TFormEntry *FindByName(const QString &name) const;
    void Add(const TFormClass &formClass, const QString &formCode, const QString &formName,
             const QString &paramValue, const QString &fnKeyList, bool beginGroup);
    /// The caption at `index`; empty outside 0 .. Count()-1.
    QString Caption(int index) const;

private:
    struct TForm
    {
        QString caption;
        std::unique_ptr<TFormEntry> entry;
    };
    std::vector<TForm> forms_;
};

/// The single registry; null before CreateFormLibrary and after DestroyFormLibrary.
TFormLibrary *FormLibrary();
/// Makes the empty registry; counted, only the first call makes one.
void CreateFormLibrary();
/// Undoes one CreateFormLibrary; the last one destroys the registry with its entries.
void DestroyFormLibrary();

/// Adds to the single registry. Mind the order: BeginGroup is the fourth argument here.
void RegisterForm(const TFormClass &formClass, const QString &formCode, const QString &formName,
                  bool beginGroup, const QString &paramValue, const QString &fnKeyList);

} // namespace Qel

#include "QelLibAdmin.h"

#include "FormList.h"
#include "frame/BaseForm.h"
#include "frame/DataModule.h"
#include "frame/FormRegistryCtrl.h"
#include "frame/LibrarySide.h"
#include "frame/RunParams.h"

#include <QCoreApplication>
#include <QList>
#include <QPointer>
#include <QXmlStreamWriter>

#include <memory>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

void OnApplicationEnd();

/// The module's life: made when it is loaded, ended when it is unloaded or the process ends,
/// whichever comes first. Nothing of the user interface or the network is made here, since the
/// application object may not exist yet.
class Library
{
public:
    Library()
    {
        CreateLibrarySide();
        CreateFormLibrary();
        CreateDataModule();
        RegisterForms();
    }

    ~Library()
    {
        Detach();
        qRemovePostRoutine(&OnApplicationEnd);
        DestroyFormLibrary();
    }
    Q_DISABLE_COPY_MOVE(Library)

    /// Living screens first, since they use the service and the data module.
    void Detach()
    {
        watchesApplication_ = false;
        const auto screens = std::exchange(screens_, {});
        for (const QPointer<QWidget> &screen : screens)
            std::unique_ptr<QWidget>(screen).reset();
        DestroyDataModule();
        RestoreHostObjects();
        FreeOwnApplication();
    }

    /// A host that quits without unloading ends with its application object: no widget and no
    /// connection may outlive that.
    void WatchApplication()
    {
        if (!std::exchange(watchesApplication_, true))
            qAddPostRoutine(&OnApplicationEnd);
    }

    QWidget *Adopt(QWidget *screen)
    {
        screens_.removeIf([](const QPointer<QWidget> &known) { return !known; });
        screens_.append(screen);
        return screen;
    }

private:
    QList<QPointer<QWidget>> screens_;
    bool watchesApplication_ = false;
};

Library library;

void OnApplicationEnd()
{
    library.Detach();
}

QByteArray FormListDocument()
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.writeStartDocument();
    xml.writeStartElement(u"FormEntrys"_s);
    for (int index = 0; index < FormLibrary()->Count(); ++index) {
        const TFormEntry &entry = *FormLibrary()->GetEntry(index);
        xml.writeEmptyElement(u"FormEntry"_s);
        xml.writeAttribute(u"FormCode"_s, entry.FormCode);
        xml.writeAttribute(u"FormName"_s, FormLibrary()->Caption(index));
        xml.writeAttribute(u"ClassName"_s, entry.FormClass.ClassName);
        xml.writeAttribute(u"ParamValue"_s, entry.ParamValue);
        xml.writeAttribute(u"FnKeyList"_s, entry.FnKeyList);
        xml.writeAttribute(u"BeginGroup"_s, entry.BeginGroup ? u"1"_s : u"0"_s);
    }
    xml.writeEndDocument();
    return document;
}

/// None for bytes that are not GBK, as for any other name that is not registered.
const TFormEntry *FindForm(const QByteArray &formName)
{
    try {
        return FormLibrary()->FindByName(DecodeGbk(formName, u"窗体名称"_s));
    } catch (const EHostTextError &) {
        return nullptr;
    }
}

void Init(const THostInit *info, qint32 hostValue)
{
    if (!info)
        throw EHostTextError(u"LibInit 缺少初始化数据。"_s);
    library.WatchApplication();
    SwapHostObjects({info->Application, info->Screen});
    const QString serverUrl = DecodeGbk(info->ServerUrl, u"服务器地址"_s);
    DataModule().SoapCtrl().SetServletURL(serverUrl, u"NorvaneSelectServlet"_s, u"NorvaneServlet"_s,
                                          u"NorvaneServlet"_s);
    SetRunParam(ParseRunParams(info->RunParams));
    SetServerURL(serverUrl);
    SetHostValue(hostValue);
}

QWidget *OpenForm(const QByteArray *formName)
{
    const TFormEntry *entry = FormLibrary() && formName ? FindForm(*formName) : nullptr;
    if (!entry)
        return nullptr;
    library.WatchApplication();
    TFrmBaseForm *screen = entry->FormClass.Create(Application());
    library.Adopt(screen);
    screen->MakeEmbedded();
    return screen;
}

} // namespace

} // namespace Qel

using namespace Qel;
using namespace Qt::StringLiterals;

void QEL_CALL LibInit(const THostInit *info, qint32 hostValue)
{
    RunForHost([&] { Init(info, hostValue); });
}

void QEL_CALL LibGetFormInfo(QByteArray *xml)
{
    RunForHost([&] {
        xml->clear();
        if (FormLibrary())
            *xml = FormListDocument();
    });
}

QWidget *QEL_CALL LibOpenForm(const QByteArray *formName)
{
    QWidget *screen = nullptr;
    RunForHost([&] { screen = OpenForm(formName); });
    return screen;
}

#pragma once

#include "remote/RemoteError.h"
#include "remote/SoapParamsList.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <memory>

class QNetworkAccessManager;

namespace Qel {

class ClientDataSet;
class InputShield;
struct RemoteCall;
struct WireBody;

/// Sent with each query, for the server to tell them apart: List for paged queries and look-up
/// lists, Detail for several unpaged ones. Either selects the same rows.
enum class TQueryType { Detail = 1, List = 2 };

/// The remote data service: reads by SQL text, writes by rows posted to a named method. One for
/// the whole library; user-interface thread only.
///
/// A call is synchronous for its caller. While it runs, windows repaint and user input is thrown
/// away, not deferred: nobody can press a button again. After BusyDelay a modal box shows the
/// seconds; there a query can be cancelled, a post cannot. A call while another runs is refused.
///
/// Everything that fails raises ERemoteError and leaves target and result list as they were.
/// Nothing of the network exists before the first call.
class TSoapCtrl
{
public:
    TSoapCtrl();
    ~TSoapCtrl();
    Q_DISABLE_COPY_MOVE(TSoapCtrl)

    /// `base` is the server's http or https address; user info in it becomes an Authorization
    /// header and appears nowhere else. Of the two posting servlets every post uses the first.
    /// An address that is none raises at the first call.
    void SetServletURL(const QString &base, const QString &query, const QString &post,
                       const QString &post2);

    /// Fills `target` with the rows of one page (from 1) of `pageSize` rows; page 0 and size 0:
    /// all rows. Replaces rows and field definitions, and only when the whole answer is good.
    /// Returns the number of rows that the statement selects over all pages. Sees all that was
    /// posted before, whichever copy of the database answers.
    int SQLQuery(const QString &sql, int page, int pageSize, ClientDataSet &target,
                 TQueryType type);

    /// Posts every row of `request` to the method and fills `result` with at least one row.
    /// Takes effect once: the post carries a key under which it is sent once more after a broken
    /// connection; if no answer came at all, the same rows posted again carry the same key.
    void PostDataList(const QString &manager, const QString &method, const TSoapParamsList &request,
                      TSoapParamsList &result);

    TSoapParamsList RequestParams; ///< the rows to be posted, for the screens' use
    TSoapParamsList ResultParams;  ///< the answer to the last post

    /// How long no byte may come before a call fails (60 s).
    void SetTimeOut(std::chrono::milliseconds timeOut) { timeOut_ = timeOut; }
    /// How long a call runs before the busy box appears (300 ms).
    void SetBusyDelay(std::chrono::milliseconds delay) { busyDelay_ = delay; }
    bool IsRunning() const { return running_; }

private:
    /// The last post whose answer never came.
    struct UnansweredPost
    {
        Wire::PostRequest post;
        QByteArray key;
        bool mayBeStored = false;
    };

    RemoteCall NewCall(const QString &servlet) const;
    WireBody Run(RemoteCall &call);
    QByteArray KeyFor(const Wire::PostRequest &post);
    QNetworkAccessManager &Network();

    QUrl base_; ///< without user info
    QByteArray authorization_;
    QByteArray position_; ///< that queries have to see, as the server named it; empty: any
    QString queryServlet_;
    QString postServlet_;
    std::chrono::milliseconds timeOut_{60'000};
    std::chrono::milliseconds busyDelay_{300};
    bool running_ = false;
    std::unique_ptr<QNetworkAccessManager> network_;
    std::unique_ptr<InputShield> shield_;
    std::unique_ptr<UnansweredPost> unanswered_;
};

} // namespace Qel

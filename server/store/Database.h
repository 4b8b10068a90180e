#pragma once

#include "store/Connection.h"

#include <QString>

#include <memory>

namespace Qel::Store {

/// Where the rows live. Makes connections; threads may share it.
class Database
{
public:
    virtual ~Database() = default;

    /// May change rows. The server keeps one of these.
    virtual std::unique_ptr<Connection> OpenWriter() = 0;
    /// Can read and nothing else, whatever text it is given; sees the state of the last commit.
    virtual std::unique_ptr<Connection> OpenReader() = 0;

    /// `url`: "sqlite:PATH". The file is made if it is not there. Throws EStoreError.
    static std::unique_ptr<Database> Open(const QString &url);
};

} // namespace Qel::Store

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonStream.h>

namespace zel {

/// Calls a function for all data that arrives on a stream.
///
/// Adapters hear in the order in which they were made. Keeps the stream alive. The function is called until the adapter
/// is destroyed, which it may do itself. An empty function is an error of the program and throws
/// boost::bad_function_call when data arrives.
class ZEL_EXPORT JsonStreamFunctorAdapter : public QObject
{
    Q_OBJECT

public:
    JsonStreamFunctorAdapter(const QSharedPointer<JsonStream>& stream, const JsonStream::Callback& function,
                             QObject* parent = nullptr);
    ~JsonStreamFunctorAdapter() override;

public Q_SLOTS:
    void dataReceived(const QString& id, const QVariant& data);

private:
    QSharedPointer<JsonStream> m_stream;
    JsonStream::Callback m_function;
};

} // namespace zel

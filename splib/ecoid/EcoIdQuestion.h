// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>

#include <zel/JsonPipe.h>

#include <iface/JsonReaderAttribute.h>

#include <QtCore/QLatin1String>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <functional>
#include <utility>

namespace zelsplib {

/// A question to the core service about one identifier, and its answers. Nothing is remembered between the two: answers
/// are told as they come, asked for or not.
class EcoIdQuestion : public QObject
{
protected:
    struct Words
    {
        const char* type;   ///< of the question; "Response" behind it makes that of the answer
        const char* asked;  ///< the member that says what is asked about, in both
        const char* answer; ///< the member that says what is so, in the answer
    };
    using Callback = std::function<void(const QString& asked, const QString& answer)>;

    EcoIdQuestion(QSharedPointer<zel::JsonPipe> pipe, const Words& words, const Callback& callback)
        : m_words(words)
        , m_pipe(std::move(pipe))
    {
        m_pipe->addListener(this, QLatin1String(words.type) + QLatin1String("Response"),
                            [words, callback](QObject*, const iface::JsonReaderAttribute& message) {
                                QString asked;
                                QString answer;
                                message.object().readFields(words.asked, asked, words.answer, answer);
                                callback(asked, answer);
                            });
    }

    void ask(const QString& asked) const { m_pipe->send(makeRequest(m_words.type, m_words.asked, asked)); }

private:
    const Words m_words;
    const QSharedPointer<zel::JsonPipe> m_pipe;
};

} // namespace zelsplib

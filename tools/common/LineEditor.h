// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/LineReader.h>

#include <memory>
#include <string>

#include <histedit.h>

namespace zeltools {

/// Lines that a person types at a terminal: edited by libedit, kept in the program's history, completed by Tab.
///
/// One at a time: it has standard output, and sees to it that what Qt's message handler prints spoils no line either.
/// The terminal is as it was before between lines, while the program is suspended, and afterwards.
class LineEditor final : public LineReader
{
    Q_OBJECT

public:
    /// Whether both ends are a terminal that can do it, and that is ours to change at the moment.
    static bool isPossible(int input);

    LineEditor(int input, const QString& program, const QString& prompt, const QStringList& commands);
    ~LineEditor() override;

protected:
    void read() override;
    void invite() override;
    void hideLine() override;

private:
    enum class Line {
        None,   ///< Nobody may type.
        Hiding, ///< libedit is being asked to take it off the screen.
        Hidden, ///< Not on the screen: something is being printed.
        Shown
    };

    struct Typed
    {
        std::wstring text;
        int behind = 0; ///< How many characters of it stand behind the cursor.
    };

    static LineEditor& of(EditLine* editor);
    static wchar_t* promptOf(EditLine* editor);
    static int nextCharacter(EditLine* editor, wchar_t* character);
    static unsigned char complete(EditLine* editor, int key);
    static unsigned char vanish(EditLine* editor, int key);

    void bindKeys();
    void watchSuspension();
    void suspend();
    void readInBackground();
    void loadHistory();
    void remember(const std::wstring& line);
    void show();
    void finishLine();

    std::wstring m_prompt;
    const QStringList m_commands;
    const QByteArray m_historyFile;
    const std::unique_ptr<EditLine, void (*)(EditLine*)> m_editor;
    const std::unique_ptr<HistoryW, void (*)(HistoryW*)> m_history;
    int m_suspensions = -1;
    Line m_line = Line::None;
    Typed m_hidden; ///< While it is not on the screen.
    bool m_atEnd = false;
};

} // namespace zeltools

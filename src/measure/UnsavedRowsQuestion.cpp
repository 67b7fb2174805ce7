#include "measure/UnsavedRowsQuestion.h"

#include "resources/StringTable.h"
#include "support/Prompt.h"

namespace kx {

UnsavedRowsAnswer askAboutUnsavedRows(Prompt& prompt, const QString& text, qint64 rows,
                                      bool canWait) {
    namespace a = strings::acquire;
    Question question{text, {strings::text(a::Save), strings::text(a::Discard)}, 0, 0};
    if (canWait) {
        question.choices << strings::text(a::Later);
        question.escapeChoice = 2;
    }
    const Question confirmation{strings::text(a::ConfirmDiscard).arg(rows),
                                {strings::text(a::Discard), strings::text(a::Keep)},
                                1,
                                1};
    for (;;) {
        const int answer = prompt.ask(question);
        if (answer == 0)
            return UnsavedRowsAnswer::Save;
        if (answer != 1)
            return UnsavedRowsAnswer::Later;
        if (prompt.ask(confirmation) == 0)
            return UnsavedRowsAnswer::Discard;
    }
}

} // namespace kx

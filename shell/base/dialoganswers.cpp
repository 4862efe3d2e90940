#include "shell/base/dialoganswers.h"

DialogAnswers &DialogAnswers::instance()
{
    static DialogAnswers answers;
    return answers;
}

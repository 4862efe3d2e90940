#include "dialoganswers.h"

DialogAnswers &DialogAnswers::instance()
{
    static DialogAnswers answers;
    return answers;
}

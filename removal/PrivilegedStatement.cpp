#include "removal/PrivilegedStatement.hpp"

std::u16string privilegedStatement(std::u16string_view literal)
{
    std::u16string statement = u"do shell script ";
    statement += literal;
    return statement += u" with administrator privileges";
}

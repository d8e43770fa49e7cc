// The data-access layer's connection texts: "key=value" pairs with ";" between them.
#pragma once

#include "langtools/Text.h"

namespace nomira::sqlite {

// The path of the database file that a connection text names: the value of its first "DBQ" or
// "Data Source", keys without regard to case, up to the next ";". Empty if it names none.
TextView DatabasePath(TextView sConnectionText);

}  // namespace nomira::sqlite

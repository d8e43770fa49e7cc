// The data-access layer's connection texts: "key=value" pairs with ";" between them.
#pragma once

#include "langtools/Text.h"

namespace nomira::sqlite {

// The path of the database file that a connection text names: the value of its first "DBQ" or
// "Data Source", keys without regard to case, up to the next ";". Empty if it names none.
TextView DatabasePath(TextView sConnectionText);

// The kind of file that a connection text asks for, if it has an "Engine Type" (with or without
// "Jet OLEDB:" ahead of it): 4 is Jet 3, 5 is Jet 4. 0 if it has none, or no number.
int EngineType(TextView sConnectionText);

}  // namespace nomira::sqlite

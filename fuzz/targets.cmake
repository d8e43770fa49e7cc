nomira_fuzz(fold_line LINKS nomira_userprogram SOURCES FoldLine.cpp)
nomira_fuzz(harvest_line LINKS nomira_userprogram SOURCES HarvestLine.cpp)
nomira_fuzz(token_parser LINKS nomira_conversion SOURCES TokenParser.cpp)
nomira_fuzz(import_line LINKS nomira_conversion nomira_memory SOURCES ImportLine.cpp)

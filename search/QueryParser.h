#pragma once

#include "search/QueryScanner.h"
#include "search/QuerySyntax.h"

#include <string_view>

namespace tesserine {

/// Reads a query. Every text is one: what makes no sense is left out, and said in the hints where a
/// person would wonder. Takes time linear in `text`, which is clean UTF-8, and does not recurse.
///
///     query    = [ or-expr ] ;
///     or-expr  = and-expr { ( "OR" | "|" ) and-expr } ;
///     and-expr = not-expr { [ "AND" | "&" ] not-expr } ;
///     not-expr = ( "-" | "NOT" | "!" ) not-expr | primary ;
///     primary  = "(" or-expr ")" | filter | tagword | phrase | word ;
///     filter   = field ":" [ cmp ] value { "," value } ;
///     cmp      = "=" | ">=" | "<=" | ">" | "<" ;
///     value    = phrase | bare [ ".." bare ] ;
///     tagword  = "#" ( phrase | bare ) ;
///     phrase   = '"' { character | '\"' } '"' ;
///     word     = bare [ "*" ] | "*" bare "*" ;
Query parseQuery(
    std::string_view text, QueryScanner::LastWord lastWord = QueryScanner::LastWord::asTyped);

}  // namespace tesserine

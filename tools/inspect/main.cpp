#include "tools/inspect/Operations.h"

#include <iostream>
#include <string>

/// Answers each line of standard input with one line on standard output. Knows no rule itself, and
/// takes nothing from the machine: time, zone and locale come with the lines.
int main() {
    using namespace tesserine::inspect;
    Operations operations;
    addAIOperations(operations);
    addBaseOperations(operations);
    addBodyOperations(operations);
    addCryptoOperations(operations);
    addExportOperations(operations);
    addIndexOperations(operations);
    addQuickAddOperations(operations);
    addSearchOperations(operations);
    addServiceOperations(operations);
    addSyncOperations(operations);
    addSyncPlanOperations(operations);
    addTaskOperations(operations);
    addTaskServiceOperations(operations);
    addUpdateOperations(operations);

    std::ios::sync_with_stdio(false);
    std::string line;
    while (std::getline(std::cin, line)) {
        std::cout << answer(operations, line) << '\n' << std::flush;
        if (!std::cout) return 1;  // nobody is left to read the answers
    }
    return std::cin.bad() ? 1 : 0;
}

#include "commands/command_table.hpp"

#include <array>

namespace virtual_adapter {
namespace {

using Table = std::array<const CommandRow*, 256>;

Table makeTable() {
    Table table{};
    for (const auto family :
         {calibrationCommands(), canCommands(), filterCommands(), identityCommands(), inputCommands(), rateCommands(),
          scalingCommands(), settingsCommands(), statusCommands(), unitCommands(), valueCommands()}) {
        for (const CommandRow& row : family)
            table[row.code] = &row;
    }
    return table;
}

}  // namespace

const CommandRow* findCommand(std::uint8_t code, std::uint32_t firmware) {
    static const Table table = makeTable();
    const CommandRow* const row = table[code];
    return row != nullptr && firmware >= row->firmware ? row : nullptr;
}

}  // namespace virtual_adapter

#include "Commands.hpp"

#include "dataset/JsonWriter.hpp"

#include <iostream>

namespace tavrin::tool {

// Prints a small document in the dataset's JSON form.
Command addExampleCommand(CLI::App& app) {
  auto* options = app.add_subcommand("example", "Print a small example dataset document");
  return {options, [] {
            Element header("GeneralInfo");
            header.append(8);
            header.append(1);
            header.append(1605555555.12);
            header.append(1605555561.5);
            header.append("iPhone");
            header.append("iPhone12,1");
            header.append("14.2");
            header.append("6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A11");
            header.append(nullptr);
            Element contacts("Contacts");
            contacts.addAccessDenied("Contacts");
            DatasetDocument document;
            document.push_back(std::move(header));
            document.push_back(std::move(contacts));
            std::cout << writeJson(document).view() << '\n';
            return 0;
          }};
}

}  // namespace tavrin::tool

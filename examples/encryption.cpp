// Encrypts a document, opens it again, changes its password and decrypts it.  encryption IN OUT
#include <odfmodel/odfmodel.h>

#include <iostream>

int main(int argc, char** argv) {
    ODF::Document document;
    if (argc != 3 || !document.Open(argv[1])) return 1;
    document.SetPassword("first");
    if (!document.Save(argv[2])) return 1;

    ODF::Document again;
    std::cout << again.Open(argv[2]).Text() << '\n'; // the password is needed
    std::cout << again.Open(argv[2], {.password = "wrong"}).Text() << '\n';
    if (!again.Open(argv[2], {.password = "first"})) return 1;
    again.SetPassword("second"); // the old one is of no use after the save
    if (!again.Save(argv[2]) || !again.Open(argv[2], {.password = "second"})) return 1;
    std::cout << "encrypted: " << again.IsEncrypted() << '\n';
    again.RemovePassword();
    if (!again.Save(argv[2]) || !again.Open(argv[2])) return 1;
    std::cout << "encrypted: " << again.IsEncrypted() << '\n';
}

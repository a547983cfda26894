// For systems whose programs are built without the libraries that read pictures.
#include "paper/paper_image.h"

namespace conferix {

std::shared_ptr<const TPaperImage> ReadImage(std::string /*bytes*/) {
    throw EInvalidImage("não pode ser lida: o programa deste sistema não lê imagens");
}

} // namespace conferix

#include "codecs/pdf/PdfDocument.h"

#include "codecs/pdf/PdfPipelines.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <ctime>
#include <exception>
#include <utility>
#include <vector>

namespace paperline {

namespace {

constexpr int pagesPerNode = 64;
constexpr int decimalPlaces = 4;

QPDFObjectHandle number(double value) {
    return QPDFObjectHandle::newReal(value, decimalPlaces, true);
}

QPDFObjectHandle boxArray(const PdfBox& box) {
    return QPDFObjectHandle::newArray(
        {number(box.x), number(box.y), number(box.x + box.width), number(box.y + box.height)});
}

QPDFObjectHandle name(const char* text) {
    return QPDFObjectHandle::newName(text);
}

const char* colourSpaceName(int components) {
    switch (components) {
    case 3:
        return "/DeviceRGB";
    case 4:
        return "/DeviceCMYK";
    default:
        return "/DeviceGray";
    }
}

std::string dateText(int64_t secondsSinceEpoch) {
    const auto seconds = static_cast<std::time_t>(secondsSinceEpoch);
    std::tm parts = {};
    char text[64];
    if (::gmtime_r(&seconds, &parts) == nullptr ||
        std::strftime(text, sizeof text, "D:%Y%m%d%H%M%SZ", &parts) == 0)
        return {};
    return text;
}

// Turns the library's exceptions to false.
template <typename Action> bool succeeds(const Action& action) {
    try {
        action();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

struct PdfInput::Library {
    std::shared_ptr<QPDF> file;
    std::vector<QPDFObjectHandle> pages;
};

PdfInput::PdfInput(std::unique_ptr<Library> library) : library_(std::move(library)) {}
PdfInput::~PdfInput() = default;

std::unique_ptr<PdfInput> PdfInput::open(const std::string& path) {
    auto library = std::make_unique<Library>();
    library->file = QPDF::create();
    const bool isOpen = succeeds([&] {
        library->file->setSuppressWarnings(true);
        library->file->processFile(path.c_str());
        library->pages = library->file->getAllPages();
    });
    return isOpen ? std::unique_ptr<PdfInput>(new PdfInput(std::move(library))) : nullptr;
}

int PdfInput::pageCount() const {
    return static_cast<int>(library_->pages.size());
}

PdfBox PdfInput::mediaBox(int page) const {
    PdfBox box{0, 0, 612, 792};
    if (page < 1 || page > pageCount())
        return box;
    (void)succeeds([&] {
        QPDFPageObjectHelper helper(library_->pages[static_cast<size_t>(page) - 1]);
        QPDFObjectHandle array = helper.getMediaBox(false);
        if (!array.isRectangle())
            return;
        const QPDFObjectHandle::Rectangle corners = array.getArrayAsRectangle();
        box = {corners.llx, corners.lly, corners.urx - corners.llx, corners.ury - corners.lly};
    });
    return box;
}

// What consecutive pages have in common is one object for all of them, so that thousands of pages
// take little memory.
struct PdfDocument::Library {
    std::shared_ptr<QPDF> file;
    std::shared_ptr<PdfImageProvider> provider;
    QPDFObjectHandle root; // of the page tree
    QPDFObjectHandle node; // of the page tree, for the last pages
    int pagesInNode = pagesPerNode;
    int pageCount = 0;

    QPDFObjectHandle pageType, imageType, jpegFilter, eightBits;

    // Of the previous image page.
    double widthPoints = 0, heightPoints = 0;
    QPDFObjectHandle mediaBox, contents;
    PdfImage lastImage;
    QPDFObjectHandle widthPixels, heightPixels, colourSpace;

    // The page being drawn on.
    QPDFObjectHandle drawnPage;
    std::string drawing;
    int drawnForms = 0;
    std::vector<std::shared_ptr<QPDF>> sources; // must outlive the writing

    explicit Library(int64_t creationSeconds);
    void addPage(QPDFObjectHandle page);
    void endNode();
    void shareForPage(double width, double height);
    QPDFObjectHandle imageStream(const PdfImage& image);
    void endDrawing();
};

PdfDocument::Library::Library(int64_t creationSeconds)
    : file(QPDF::create()), provider(std::make_shared<PdfImageProvider>()), pageType(name("/Page")),
      imageType(name("/Image")), jpegFilter(name("/DCTDecode")),
      eightBits(QPDFObjectHandle::newInteger(8)) {
    file->emptyPDF();
    file->setSuppressWarnings(true);
    root = file->getRoot().getKey("/Pages");
    QPDFObjectHandle information = QPDFObjectHandle::newDictionary();
    const std::string date = dateText(creationSeconds);
    if (!date.empty())
        information.replaceKey("/CreationDate", QPDFObjectHandle::newString(date));
    // As an indirect object, where the patch of the producer looks for the text.
    information.replaceKey("/Producer",
                           file->makeIndirectObject(QPDFObjectHandle::newString(pdfProducer)));
    file->getTrailer().replaceKey("/Info", file->makeIndirectObject(information));
}

void PdfDocument::Library::endNode() {
    if (node.isInitialized())
        node.replaceKey("/Count", QPDFObjectHandle::newInteger(pagesInNode));
}

// The page tree has two levels, so that viewers find a page without reading all others.
void PdfDocument::Library::addPage(QPDFObjectHandle page) {
    if (pagesInNode == pagesPerNode) {
        endNode();
        node = file->makeIndirectObject(QPDFObjectHandle::newDictionary());
        node.replaceKey("/Type", name("/Pages"));
        node.replaceKey("/Parent", root);
        node.replaceKey("/Kids", QPDFObjectHandle::newArray());
        root.getKey("/Kids").appendItem(node);
        pagesInNode = 0;
    }
    page.replaceKey("/Parent", node);
    node.getKey("/Kids").appendItem(page);
    ++pagesInNode;
    ++pageCount;
}

void PdfDocument::Library::shareForPage(double width, double height) {
    if (mediaBox.isInitialized() && width == widthPoints && height == heightPoints)
        return;
    mediaBox = boxArray({0, 0, width, height});
    contents = file->newStream("q " + number(width).unparse() + " 0 0 " + number(height).unparse() +
                               " 0 0 cm /Im0 Do Q");
    contents.setFilterOnWrite(false);
    widthPoints = width;
    heightPoints = height;
}

QPDFObjectHandle PdfDocument::Library::imageStream(const PdfImage& image) {
    if (!widthPixels.isInitialized() || image.widthPixels != lastImage.widthPixels)
        widthPixels = QPDFObjectHandle::newInteger(image.widthPixels);
    if (!heightPixels.isInitialized() || image.heightPixels != lastImage.heightPixels)
        heightPixels = QPDFObjectHandle::newInteger(image.heightPixels);
    if (!colourSpace.isInitialized() || image.components != lastImage.components)
        colourSpace = name(colourSpaceName(image.components));
    lastImage = image;

    QPDFObjectHandle stream = file->newStream();
    QPDFObjectHandle dictionary = stream.getDict();
    dictionary.replaceKey("/Subtype", imageType);
    dictionary.replaceKey("/Width", widthPixels);
    dictionary.replaceKey("/Height", heightPixels);
    dictionary.replaceKey("/ColorSpace", colourSpace);
    dictionary.replaceKey("/BitsPerComponent",
                          image.bitsPerComponent == 8
                              ? eightBits
                              : QPDFObjectHandle::newInteger(image.bitsPerComponent));
    if (image.isInverted)
        dictionary.replaceKey("/Decode", QPDFObjectHandle::parse("[1 0 1 0 1 0 1 0]"));
    provider->addImage(stream.getObjectID());
    stream.replaceStreamData(provider,
                             image.isJpeg ? jpegFilter : QPDFObjectHandle::newNull(),
                             QPDFObjectHandle::newNull());
    stream.setFilterOnWrite(!image.isJpeg);
    return stream;
}

void PdfDocument::Library::endDrawing() {
    if (!drawnPage.isInitialized())
        return;
    drawnPage.replaceKey("/Contents", file->newStream(drawing));
    drawnPage = QPDFObjectHandle();
    drawing.clear();
    drawnForms = 0;
}

PdfDocument::PdfDocument(std::unique_ptr<Library> library) : library_(std::move(library)) {}
PdfDocument::~PdfDocument() = default;

std::unique_ptr<PdfDocument> PdfDocument::make(int64_t creationSeconds) {
    std::unique_ptr<Library> library;
    if (!succeeds([&] { library = std::make_unique<Library>(creationSeconds); }))
        return nullptr;
    return std::unique_ptr<PdfDocument>(new PdfDocument(std::move(library)));
}

bool PdfDocument::addImagePage(const PdfImage& image, double widthPoints, double heightPoints) {
    return succeeds([&] {
        Library& library = *library_;
        library.endDrawing();
        library.shareForPage(widthPoints, heightPoints);
        QPDFObjectHandle images = QPDFObjectHandle::newDictionary();
        images.replaceKey("/Im0", library.imageStream(image));
        QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
        resources.replaceKey("/XObject", images);
        QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
        page.replaceKey("/Type", library.pageType);
        page.replaceKey("/MediaBox", library.mediaBox);
        page.replaceKey("/Contents", library.contents);
        page.replaceKey("/Resources", resources);
        library.addPage(library.file->makeIndirectObject(page));
    });
}

bool PdfDocument::addEmptyPage(const PdfBox& mediaBox) {
    return succeeds([&] {
        Library& library = *library_;
        library.endDrawing();
        QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
        resources.replaceKey("/XObject", QPDFObjectHandle::newDictionary());
        QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
        page.replaceKey("/Type", library.pageType);
        page.replaceKey("/MediaBox", boxArray(mediaBox));
        page.replaceKey("/Resources", resources);
        library.drawnPage = library.file->makeIndirectObject(page);
        library.addPage(library.drawnPage);
    });
}

bool PdfDocument::drawOnLastPage(const PdfInput& input, int page) {
    Library& library = *library_;
    if (!library.drawnPage.isInitialized() || page < 1 || page > input.pageCount())
        return false;
    return succeeds([&] {
        QPDFPageObjectHelper helper(input.library_->pages[static_cast<size_t>(page) - 1]);
        const QPDFObjectHandle form = helper.getFormXObjectForPage(false);
        const std::string formName = "/Fx" + std::to_string(library.drawnForms);
        library.drawnPage.getKey("/Resources")
            .getKey("/XObject")
            .replaceKey(formName, library.file->copyForeignObject(form));
        ++library.drawnForms;
        library.drawing += "q " + formName + " Do Q\n";
        if (library.sources.empty() || library.sources.back() != input.library_->file)
            library.sources.push_back(input.library_->file);
    });
}

bool PdfDocument::write(const PdfImageData& imageData, const PdfSink& sink) {
    Library& library = *library_;
    PdfOutput output(sink);
    const bool written = succeeds([&] {
        library.endDrawing();
        library.endNode();
        library.root.replaceKey("/Count", QPDFObjectHandle::newInteger(library.pageCount));
        library.provider->setData(imageData);
        QPDFWriter writer(*library.file);
        writer.setOutputPipeline(&output);
        writer.setMinimumPDFVersion("1.4");
        writer.setObjectStreamMode(qpdf_o_disable);
        writer.setCompressStreams(true);
        writer.setDecodeLevel(qpdf_dl_none);
        writer.setStaticID(true); // PdfOutput replaces it
        writer.write();
    });
    library.provider->setData({});
    return output.flush() && written;
}

} // namespace paperline

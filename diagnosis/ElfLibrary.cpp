#include "diagnosis/ElfLibrary.h"

#include "registry/VQMModuleContract.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gelf.h>
#include <link.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Orvia {

namespace {

/// An open file, closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    operator int() const { return m_descriptor; }

private:
    const int m_descriptor;
};

using ElfHandle = std::unique_ptr<Elf, decltype(&elf_end)>;

/// The fields that stand at the same place in files of both classes.
struct CommonHeader
{
    std::array<unsigned char, EI_NIDENT> ident;
    std::array<unsigned char, 2> type;
    std::array<unsigned char, 2> machine;
};

int machineOf(const CommonHeader &header)
{
    const auto &[first, second] = header.machine;
    return header.ident[EI_DATA] == ELFDATA2MSB ? first << 8 | second : second << 8 | first;
}

QString machineText(const CommonHeader &header)
{
    constexpr std::pair<int, const char *> names[] = {
        {EM_X86_64, "x86-64"},   {EM_386, "x86"},      {EM_AARCH64, "AArch64"},
        {EM_ARM, "Arm"},         {EM_RISCV, "RISC-V"}, {EM_MIPS, "MIPS"},
        {EM_PPC64, "PowerPC64"}, {EM_PPC, "PowerPC"},  {EM_S390, "s390"},
    };
    const int machine = machineOf(header);
    for (const auto &[number, name] : names) {
        if (number == machine)
            return name;
    }
    return QString("machine %1").arg(machine);
}

QString classText(const CommonHeader &header)
{
    const int elfClass = header.ident[EI_CLASS];
    return elfClass == ELFCLASS64 ? "64-bit" : elfClass == ELFCLASS32 ? "32-bit" : "class unknown";
}

/// The header of the program that runs; all zero when it cannot be read.
const CommonHeader &ownHeader()
{
    static const CommonHeader header = [] {
        CommonHeader own = {};
        const Descriptor program(::open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
        if (::pread(program, &own, sizeof own, 0) != sizeof own)
            own = {};
        return own;
    }();
    return header;
}

ElfLibrary refused(ElfLibrary library, const char *rule, const QString &problem)
{
    library.rule = rule;
    library.problem = problem;
    return library;
}

bool lacks(std::uint64_t fileSize, std::uint64_t offset, std::uint64_t size)
{
    return offset > fileSize || size > fileSize - offset;
}

/// Whether headers and what is to be mapped lie within the file.
bool isTruncated(Elf *elf, const GElf_Ehdr &header, std::uint64_t fileSize)
{
    if (lacks(fileSize, header.e_phoff, std::uint64_t(header.e_phnum) * header.e_phentsize) ||
        lacks(fileSize, header.e_shoff, std::uint64_t(header.e_shnum) * header.e_shentsize))
        return true;
    for (int i = 0; i < header.e_phnum; ++i) {
        GElf_Phdr segment;
        if (gelf_getphdr(elf, i, &segment) != nullptr && segment.p_type == PT_LOAD &&
            lacks(fileSize, segment.p_offset, segment.p_filesz))
            return true;
    }
    return false;
}

bool hasDynamicSegment(Elf *elf, const GElf_Ehdr &header)
{
    for (int i = 0; i < header.e_phnum; ++i) {
        GElf_Phdr segment;
        if (gelf_getphdr(elf, i, &segment) != nullptr && segment.p_type == PT_DYNAMIC)
            return true;
    }
    return false;
}

/// Calls take(section data, number of entries, header) for the first section of the type.
template <typename Take>
bool withSection(Elf *elf, GElf_Word type, Elf_Type entry, Take take)
{
    for (Elf_Scn *section = nullptr; (section = elf_nextscn(elf, section)) != nullptr;) {
        GElf_Shdr header;
        if (gelf_getshdr(section, &header) == nullptr || header.sh_type != type)
            continue;
        Elf_Data *data = elf_getdata(section, nullptr);
        const std::size_t size = gelf_fsize(elf, entry, 1, EV_CURRENT);
        if (data == nullptr || data->d_buf == nullptr || size == 0)
            return false;
        take(data, static_cast<int>(data->d_size / size), header);
        return true;
    }
    return false;
}

/// Fills in what is of use to the loader; `flags` become those of DT_FLAGS_1.
void readDynamic(Elf *elf, ElfLibrary *library, std::uint64_t *flags)
{
    library->hasTables =
        withSection(elf, SHT_DYNAMIC, ELF_T_DYN, [&](Elf_Data *data, int count, const GElf_Shdr &header) {
            GElf_Dyn entry;
            for (int i = 0; i < count && gelf_getdyn(data, i, &entry) != nullptr && entry.d_tag != DT_NULL;
                 ++i) {
                if (entry.d_tag == DT_FLAGS_1)
                    *flags = entry.d_un.d_val;
                if (entry.d_tag != DT_NEEDED && entry.d_tag != DT_RPATH && entry.d_tag != DT_RUNPATH)
                    continue;
                const char *text = elf_strptr(elf, header.sh_link, entry.d_un.d_val);
                if (text == nullptr)
                    *library = refused(*library, "elf-damaged", "names a text that is not in its tables");
                else if (entry.d_tag == DT_NEEDED)
                    library->needed.append(QFile::decodeName(text));
                else
                    (entry.d_tag == DT_RPATH ? library->rpath : library->runpath) = QFile::decodeName(text);
            }
        });
    library->noDelete = (*flags & DF_1_NODELETE) != 0;
}

/// The notes of one segment; false if one of them is not as its header says.
bool takeNotes(Elf_Data *data, QList<QByteArray> *moduleNotes)
{
    const QByteArray moduleOwner(moduleNoteOwner, qsizetype(std::strlen(moduleNoteOwner)) + 1);
    GElf_Nhdr note;
    std::size_t owner = 0;
    std::size_t contents = 0;
    for (std::size_t next = 0; next < data->d_size;) {
        next = gelf_getnote(data, next, &note, &owner, &contents);
        if (next == 0)
            return false;
        const char *bytes = static_cast<const char *>(data->d_buf);
        if (note.n_type == moduleNoteType &&
            QByteArray(bytes + owner, qsizetype(note.n_namesz)) == moduleOwner)
            moduleNotes->append(QByteArray(bytes + contents, qsizetype(note.n_descsz)));
    }
    return true;
}

void readNotes(Elf *elf, const GElf_Ehdr &header, ElfLibrary *library)
{
    for (int i = 0; i < header.e_phnum; ++i) {
        GElf_Phdr segment;
        if (gelf_getphdr(elf, i, &segment) == nullptr || segment.p_type != PT_NOTE || segment.p_filesz == 0)
            continue;
        const Elf_Type kind = segment.p_align == 8 ? ELF_T_NHDR8 : ELF_T_NHDR;
        const auto offset = static_cast<std::int64_t>(segment.p_offset);
        Elf_Data *data = elf_getdata_rawchunk(elf, offset, segment.p_filesz, kind); // null beyond the file
        if (data == nullptr || !takeNotes(data, &library->moduleNotes))
            library->hasDamagedNotes = true;
    }
}

bool isExported(const GElf_Sym &symbol)
{
    const int visibility = GELF_ST_VISIBILITY(symbol.st_other);
    return symbol.st_shndx != SHN_UNDEF && GELF_ST_BIND(symbol.st_info) != STB_LOCAL &&
           (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

bool isFunction(const GElf_Sym &symbol)
{
    const int type = GELF_ST_TYPE(symbol.st_info);
    return type == STT_FUNC || type == STT_GNU_IFUNC;
}

void readSymbols(Elf *elf, ElfLibrary *library)
{
    withSection(elf, SHT_DYNSYM, ELF_T_SYM, [&](Elf_Data *data, int count, const GElf_Shdr &header) {
        GElf_Sym symbol;
        for (int i = 0; i < count && gelf_getsym(data, i, &symbol) != nullptr; ++i) {
            const char *name = elf_strptr(elf, header.sh_link, symbol.st_name);
            if (name == nullptr || !isExported(symbol))
                continue;
            if (isFunction(symbol))
                library->functions.insert(name);
            if (GELF_ST_BIND(symbol.st_info) == STB_GNU_UNIQUE)
                library->uniqueSymbols.append(name);
        }
    });
}

ElfLibrary readContents(ElfLibrary library, int file, std::uint64_t fileSize, ElfSymbols symbols)
{
    constexpr const char *cutOff = "is cut off: its headers tell of more than it holds";
    if (fileSize < sizeof(ElfW(Ehdr))) // of this process's class, as the file is
        return refused(library, "elf-truncated", cutOff);
    static const bool ready = elf_version(EV_CURRENT) != EV_NONE;
    const ElfHandle elf(ready ? elf_begin(file, ELF_C_READ, nullptr) : nullptr, elf_end);
    GElf_Ehdr header;
    if (elf == nullptr || gelf_getehdr(elf.get(), &header) == nullptr)
        return refused(library, "elf-damaged", QString("is damaged: ") + elf_errmsg(-1));
    if (isTruncated(elf.get(), header, fileSize))
        return refused(library, "elf-truncated", cutOff);
    std::uint64_t flags = 0;
    readDynamic(elf.get(), &library, &flags);
    if (header.e_type != ET_DYN || (flags & DF_1_PIE) != 0 || !hasDynamicSegment(elf.get(), header))
        return refused(library, "not-a-library", "is an ELF file, but no shared library");
    readNotes(elf.get(), header, &library);
    if (symbols == ElfSymbols::Read)
        readSymbols(elf.get(), &library);
    return library;
}

} // namespace

ElfLibrary readElfLibrary(const QString &path, ElfSymbols symbols)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status;
    // What is no regular file is not even opened: that could wait, or do something to a device.
    if (::stat(name.constData(), &status) != 0)
        return refused({}, errno == ENOENT || errno == ENOTDIR ? "file-missing" : "unreadable",
                       QString::fromLocal8Bit(std::strerror(errno)));
    if (!S_ISREG(status.st_mode))
        return refused({}, "not-a-file", S_ISDIR(status.st_mode) ? "is a folder" : "is no regular file");
    const Descriptor file(::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file < 0)
        return refused({}, "unreadable", QString::fromLocal8Bit(std::strerror(errno)));
    if (status.st_size == 0)
        return refused({}, "file-empty", "is empty");

    CommonHeader header = {};
    const ssize_t length = ::pread(file, &header, sizeof header, 0);
    if (length < 0)
        return refused({}, "unreadable", QString::fromLocal8Bit(std::strerror(errno)));
    if (length < SELFMAG || std::memcmp(header.ident.data(), ELFMAG, SELFMAG) != 0)
        return refused({}, "not-elf", "is no ELF file");
    if (length < ssize_t(sizeof header))
        return refused({}, "elf-truncated", "is cut off within its first header");

    ElfLibrary library;
    library.kind = classText(header) + ' ' + machineText(header);
    if (header.ident[EI_CLASS] != ownHeader().ident[EI_CLASS])
        return refused(library, "wrong-class",
                       "is " + classText(header) + ", this process " + classText(ownHeader()));
    if (machineOf(header) != machineOf(ownHeader()) || header.ident[EI_DATA] != ownHeader().ident[EI_DATA])
        return refused(library, "wrong-machine",
                       "is for " + machineText(header) + ", this process runs on " +
                           machineText(ownHeader()) +
                           (machineOf(header) == machineOf(ownHeader()) ? " of the other byte order" : ""));
    return readContents(std::move(library), file, static_cast<std::uint64_t>(status.st_size), symbols);
}

} // namespace Orvia

#include <host/file/openimageio/Entries.h>

const host::FileLibrary kreilugeFileLibrary = {
    .openReader = host::openimageio::openReader,
    .createWriter = host::openimageio::createWriter,
    .fileFormatName = host::openimageio::fileFormatName,
    .newImage = host::openimageio::newImage,
    .setColourSpace = host::openimageio::setColourSpace,
    .metadata = host::openimageio::metadata,
    .metadataJson = host::openimageio::metadataJson,
    .setFileThreads = host::openimageio::setFileThreads,
};

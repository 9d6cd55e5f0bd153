// The keys of a sequence and the words among its values, as files hold them. Only this folder and the engine's
// redirection of save steps use them; everybody else asks the typed readers.
#pragma once

// The sequence.
inline constexpr char kCommandsKey[] = "Commands";
inline constexpr char kInputKey[] = "Input";
inline constexpr char kOutputKey[] = "Output";

// One of its commands.
inline constexpr char kHandlerNameKey[] = "HandlerName";
inline constexpr char kTitleKey[] = "Title";
inline constexpr char kUIPolicyKey[] = "UIPolicy";
inline constexpr char kConfigKey[] = "Config";
inline constexpr char kParamsKey[] = "Params";

// Its input. The kind and the folder have these keys in its output and in save steps, too.
inline constexpr char kFileVariationKey[] = "FileVariation";
inline constexpr char kFolderKey[] = "PreselectedFolderPath";
inline constexpr char kFilesKey[] = "PreselectedFilesPaths";
inline constexpr char kSourceOptionsKey[] = "SourceFileOptions";
inline constexpr char kFormatsKey[] = "Formats";

// Its output, and save steps.
inline constexpr char kAddToBaseNameKey[] = "AddToBaseName";
inline constexpr char kInsertBeforeKey[] = "InsertBeforeBaseName";
inline constexpr char kInsertAfterKey[] = "InsertAfterBaseName";
inline constexpr char kDontOverwriteKey[] = "DontOverwrite";
inline constexpr char kOptimizePdfKey[] = "OptimizePDF";
inline constexpr char kRunOptimizerKey[] = "RunPDFOptimizer";
inline constexpr char kConverterKey[] = "HandlerUniqueID";
inline constexpr char kSaveDestinationKey[] = "DocSaveDestType";
inline constexpr char kPresetNameKey[] = "PresetName";
inline constexpr char kEmbedIndexKey[] = "EmbedIndex";
inline constexpr char kNumericNamingKey[] = "NumbericNaming";  // sic
inline constexpr char kHandleOutputKey[] = "HandleOutput";

// The step that saves, and where it is to save.
inline constexpr char kSaveStepHandler[] = "WorkflowPlaybackSaveFiles";
inline constexpr char kSaveWhereDocumentIs[] = "WorkflowPlaybackSave";
inline constexpr char kSaveAsked[] = "WorkflowPlaybackSaveAs";
inline constexpr char kSaveInAFolder[] = "WorkflowPlaybackSaveInAFolder";

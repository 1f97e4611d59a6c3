// Zando for the web: recognition of 3D hand-motion gestures (see zando.js for the conventions).

/** A position [x, y, z] or a rotation quaternion [x, y, z, w]: Float64Array or a plain array. */
export type Vector = ArrayLike<number>;
/** A 4x4 matrix, 16 numbers in column-major order, translation in elements 12 to 14. */
export type Matrix = ArrayLike<number>;

export declare const ReturnCode: Readonly<{
  Success: 0; Failed: -1; InvalidIndex: -2; InvalidPath: -3; InvalidFile: -4; PointCountMismatch: -6;
  StrokeTooShort: -7; TrainingInProgress: -8; NoGestures: -9; ModelMismatch: -10; CannotReplaceFile: -11;
  NoStrokeStarted: -12; NoPartResult: -13; ResourceError: -14; LoadingInProgress: -15; SavingInProgress: -17;
  InvalidParameter: -18; StreamError: -19;
}>;
export declare const MirrorAxis: Readonly<{ None: 0; X: 1; Y: 2; Z: 4 }>;

/** The name of a return code, "Unknown" for a number outside ReturnCode. */
export declare function codeName(code: number): string;

/** A negative return code, thrown. */
export declare class ZandoError extends Error {
  readonly code: number;
  /** For example "NoStrokeStarted". */
  readonly codeName: string;
  readonly operation: string;
}

export interface InitOptions {
  /** Where zando-core.wasm and zando-core.worker.js are; by default beside zando.js. */
  locateFile?: (name: string, prefix: string) => string;
}
/** Loads the module once (later calls return the same promise). Needs a cross-origin isolated page. */
export declare function init(options?: InitOptions): Promise<unknown>;
/** The library's version text. */
export declare function version(): string;

/** The module's in-memory file system, where sets are saved and loaded by path. */
export declare const files: Readonly<{
  write(path: string, bytes: Uint8Array): void;
  read(path: string): Uint8Array;
  remove(path: string): void;
  exists(path: string): boolean;
}>;

/** Where a stroke was: its centre, size and principal directions. */
export interface StrokeInfo {
  position?: number[] | Float64Array;
  scale?: number;
  directions?: number[][];
}
/** What endStroke writes: the identified gesture's similarity and every gesture's numbers. */
export interface StrokeResult extends StrokeInfo {
  similarity?: number;
  probabilities?: number[];
  similarities?: number[];
}
export interface Similarity { similarity?: number }
export interface Detection { gesture?: number; confidence?: number }
export interface CombinationDetection { combination?: number; confidence?: number }
export interface CombinationResult { probability?: number; similarity?: number }
export interface SampleStroke {
  handPositions: Float64Array; handRotations: Float64Array; headPositions: Float64Array; headRotations: Float64Array;
}

export interface ZandoEventMap {
  /** Training's score so far, on the page's thread. */
  trainingprogress: CustomEvent<{ score: number }>;
  trainingfinish: CustomEvent<{ score: number }>;
  savingprogress: CustomEvent<{ percent: number }>;
  /** result: 0 or a negative return code. */
  savingfinish: CustomEvent<{ result: number }>;
  loadingprogress: CustomEvent<{ percent: number }>;
  loadingfinish: CustomEvent<{ result: number }>;
}

/** What both classes share: the native object, background jobs and files. */
declare class ZandoObject extends EventTarget {
  addEventListener<K extends keyof ZandoEventMap>(type: K, listener: (event: ZandoEventMap[K]) => void,
    options?: boolean | AddEventListenerOptions): void;
  addEventListener(type: string, listener: EventListenerOrEventListenerObject | null,
    options?: boolean | AddEventListenerOptions): void;
  /** Releases the native object after cancelling its background jobs. */
  dispose(): void;
  readonly disposed: boolean;

  /** Starts training on a worker thread. */
  startTraining(): void;
  /** Trains on a worker thread; resolves with the final score. */
  train(): Promise<number>;
  stopTraining(): void;
  readonly isTraining: boolean;
  readonly isSaving: boolean;
  readonly isLoading: boolean;
  readonly recognitionScore: number;
  /** The longest training, in seconds. */
  maxTrainingTime: number;
  /** Identification by the shape of every stored sample, usable without training (training in this mode ends at once, without a network). */
  enhancedRecognition: boolean;
  /** 0 strictest, 1 most willing (default 0.5). */
  detectionSensitivity: number;
  /** The host's frame time in seconds instead of the clock; negative goes back to the clock. */
  setHostTime(seconds: number): void;

  saveToFile(path: string): void;
  saveToBytes(): Uint8Array;
  saveToFileAsync(path: string): Promise<void>;
  saveToBytesAsync(): Promise<Uint8Array>;
  loadFromFile(path: string): void;
  loadFromBytes(bytes: Uint8Array): void;
  importFromBytes(bytes: Uint8Array): void;
  loadFromFileAsync(path: string): Promise<void>;
  loadFromBytesAsync(bytes: Uint8Array): Promise<void>;
}

/** One recogniser: a hand, a controller or the head. */
export declare class GestureRecognition extends ZandoObject {
  constructor();

  /** gesture: the gesture a sample is recorded for, -1 (default) to identify. */
  startStroke(headPosition: Vector, headRotation: Vector, gesture?: number): void;
  tryStartStroke(headPosition: Vector, headRotation: Vector, gesture?: number): number;
  startStrokeM(headMatrix: Matrix, gesture?: number): void;
  updateHeadPosition(headPosition: Vector, headRotation: Vector): void;
  tryUpdateHeadPosition(headPosition: Vector, headRotation: Vector): number;
  contdStroke(handPosition: Vector, handRotation?: Vector): void;
  tryContdStroke(handPosition: Vector, handRotation?: Vector): number;
  contdStrokeM(handMatrix: Matrix): number;
  readonly isStrokeStarted: boolean;
  cancelStroke(): void;
  pruneStroke(maxPoints: number, maxAgeMs: number): number;
  /** The gesture identified (or the sample's gesture); fills `out`. */
  endStroke(out?: StrokeResult): number;
  tryEndStroke(out?: StrokeResult): number;

  contdIdentify(headPosition: Vector, headRotation: Vector, out?: Similarity): number;
  tryContdIdentify(headPosition: Vector, headRotation: Vector, out?: Similarity): number;
  tryContdIdentifyAndGetAllProbabilitiesAndSimilarities(headPosition: Vector, headRotation: Vector,
    probabilities: Float64Array | number[], similarities?: Float64Array | number[]): number;
  /** True on the frame a performance was completed. */
  contdDetect(headPosition: Vector, headRotation: Vector, out?: Detection): boolean;
  /** 1 on that frame, 0 on others, or a negative code. */
  tryContdDetect(headPosition: Vector, headRotation: Vector, out?: Detection): number;

  readonly numberOfGestures: number;
  createGesture(name: string): number;
  deleteGesture(index: number): void;
  deleteAllGestures(): void;
  getGestureName(index: number): string;
  setGestureName(index: number, name: string): void;
  getGestureEnabled(index: number): boolean;
  setGestureEnabled(index: number, enabled: boolean): void;
  getGestureNumberOfSamples(index: number): number;
  deleteGestureSample(gesture: number, sample: number): void;
  deleteAllGestureSamples(gesture: number): void;
  getGestureSampleStroke(gesture: number, sample: number, processed?: boolean): SampleStroke;
}

/** Several recognisers (parts) driven as one, with combinations naming one gesture a part. */
export declare class GestureCombinations extends ZandoObject {
  constructor(numberOfParts: number);
  readonly numberOfParts: number;

  startStroke(part: number, headPosition: Vector, headRotation: Vector, gesture?: number): void;
  tryStartStroke(part: number, headPosition: Vector, headRotation: Vector, gesture?: number): number;
  updateHeadPosition(headPosition: Vector, headRotation: Vector): void;
  tryUpdateHeadPosition(headPosition: Vector, headRotation: Vector): number;
  contdStroke(part: number, handPosition: Vector, handRotation?: Vector): void;
  tryContdStroke(part: number, handPosition: Vector, handRotation?: Vector): number;
  endStroke(part: number, out?: StrokeInfo): number;
  tryEndStroke(part: number, out?: StrokeInfo): number;
  isStrokeStarted(part: number): boolean;
  cancelStroke(part: number): void;

  identifyGestureCombination(out?: CombinationResult): number;
  tryIdentifyGestureCombination(out?: CombinationResult): number;
  contdIdentify(headPosition: Vector, headRotation: Vector, out?: Similarity): number;
  tryContdIdentify(headPosition: Vector, headRotation: Vector, out?: Similarity): number;
  contdDetect(headPosition: Vector, headRotation: Vector, out?: CombinationDetection): boolean;
  tryContdDetect(headPosition: Vector, headRotation: Vector, out?: CombinationDetection): number;

  numberOfGestures(part: number): number;
  createGesture(part: number, name: string): number;
  deleteGesture(part: number, index: number): void;
  copyGesture(fromPart: number, fromGesture: number, toPart: number, toGesture?: number, mirror?: number): number;
  getGestureName(part: number, index: number): string;
  getGestureNumberOfSamples(part: number, index: number): number;

  readonly numberOfGestureCombinations: number;
  createGestureCombination(name: string): number;
  deleteGestureCombination(combination: number): void;
  /** gesture -1: the part stays still. */
  setCombinationPartGesture(combination: number, part: number, gesture: number): void;
  getCombinationPartGesture(combination: number, part: number): number;
  getGestureCombinationName(combination: number): string;
  /** How many parts train at once. */
  setMaxTrainingThreads(threads: number): void;
}

// Zando for C# hosts: recognition of 3D hand-motion gestures through the native libzando.
//
// Two classes own a native object each: GestureRecognition (one recogniser: a hand, a controller
// or the head) and GestureCombinations (several recognisers driven as one, with combinations that
// name one gesture per part). Both release the native object in Dispose, and in their finalizer
// when a host forgets.
//
// Conventions:
// - Positions are Vector3 and rotations Quaternion (x, y, z, w), in the tracking space's units;
//   matrices are double[16], column-major, with the translation in elements 12 to 14; Euler
//   angles are radians.
// - Methods throw ZandoException when the library answers with a negative return code. Methods
//   called every frame (stroke points, head poses, continuous identification, detection and
//   recording) and those whose failures are ordinary outcomes (a stroke too short, nothing
//   identified) also have a Try form that returns the library's int as it is (an index, a count,
//   0 or a negative code) and allocates nothing.
// - Training, saving and loading report through the C# events of the object. Handlers run on the
//   library's worker thread, not the host's main thread; an exception a handler throws cannot
//   travel into native code, so it is kept in LastCallbackError instead. GestureDetected is the
//   exception: the detection call raises it itself, on the host's thread, before it returns.
// - Metadata (user data kept with the set, a gesture or a combination, saved in the file) is a
//   byte[] here. The wrapper owns the native objects behind it and frees them with the object.
//
// Build: compile this file into the host's assembly; the native library (libzando.so, or
// zando.dll on Windows) must be where the runtime looks for native libraries.
using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;

namespace Zando
{
    /// <summary>The library's return codes. Numbers that are skipped are not used.</summary>
    public enum ReturnCode
    {
        Success = 0,
        Failed = -1,
        InvalidIndex = -2,
        InvalidPath = -3,
        InvalidFile = -4,
        PointCountMismatch = -6,
        StrokeTooShort = -7,
        TrainingInProgress = -8,
        NoGestures = -9,
        ModelMismatch = -10,
        CannotReplaceFile = -11,
        NoStrokeStarted = -12,
        NoPartResult = -13,
        ResourceError = -14,
        LoadingInProgress = -15,
        SavingInProgress = -17,
        InvalidParameter = -18,
        StreamError = -19,
    }

    /// <summary>Order in which Euler angles compose.</summary>
    public enum RotationOrder { XYZ = 0, XZY = 1, YXZ = 2, YZX = 3, ZXY = 4, ZYX = 5 }

    /// <summary>Which head pose a stroke is read against.</summary>
    public enum UpdateHeadPositionPolicy
    {
        /// <summary>Each point against its own head pose.</summary>
        UseLatest = 0,
        /// <summary>The whole stroke against its first head pose.</summary>
        UseInitial = 1,
    }

    /// <summary>Kind of a recorded sample.</summary>
    public enum SampleType
    {
        /// <summary>A complete motion from start to end.</summary>
        Stroke = 0,
        /// <summary>A window cut from a running motion.</summary>
        Continuous = 1,
    }

    /// <summary>The axis a copied gesture is mirrored about.</summary>
    public enum MirrorAxis { None = 0, X = 1, Y = 2, Z = 4 }

    /// <summary>A negative return code of the library, with the operation that met it.</summary>
    public class ZandoException : Exception
    {
        public ZandoException(int code, string operation)
            : base(operation + " failed: " + NameOf(code) + " (" + code + ")")
        {
            Code = code;
            CodeName = NameOf(code);
            Operation = operation;
        }

        /// <summary>The number the library returned.</summary>
        public int Code { get; private set; }
        /// <summary>The code's name, for example "InvalidIndex"; "Unknown" for a number outside ReturnCode.</summary>
        public string CodeName { get; private set; }
        public string Operation { get; private set; }
        public ReturnCode ReturnCode { get { return (ReturnCode)Code; } }

        public static string NameOf(int code)
        {
            return Enum.IsDefined(typeof(ReturnCode), code) ? ((ReturnCode)code).ToString() : "Unknown";
        }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Vector3
    {
        public double X, Y, Z;

        public Vector3(double x, double y, double z) { X = x; Y = y; Z = z; }

        public static readonly Vector3 Zero = new Vector3(0, 0, 0);

        public override string ToString() { return "(" + X + ", " + Y + ", " + Z + ")"; }
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct Quaternion
    {
        public double X, Y, Z, W;

        public Quaternion(double x, double y, double z, double w) { X = x; Y = y; Z = z; W = w; }

        public static readonly Quaternion Identity = new Quaternion(0, 0, 0, 1);

        public override string ToString() { return "(" + X + ", " + Y + ", " + Z + ", " + W + ")"; }
    }

    /// <summary>Where a gesture was made: its centre, its size and its three principal directions.</summary>
    public struct StrokeInfo
    {
        public Vector3 Position;
        public double Scale;
        public Vector3 Direction0, Direction1, Direction2;
    }

    /// <summary>A recorded sample: one entry per point.</summary>
    public sealed class Stroke
    {
        public Vector3[] HandPositions;
        public Quaternion[] HandRotations;
        public Vector3[] HeadPositions;
        public Quaternion[] HeadRotations;
    }

    /// <summary>The mean of a gesture's samples, and where and how large it is on average.</summary>
    public sealed class MeanStroke
    {
        public Vector3[] Positions;
        public Quaternion[] Rotations;
        public Vector3 Position;
        public Quaternion Rotation;
        public double Scale;
    }

    /// <summary>
    /// Marks the methods the library calls back: ahead-of-time compilers of engine hosts look for
    /// an attribute of this name on every static method a native function pointer leads to.
    /// </summary>
    [AttributeUsage(AttributeTargets.Method)]
    internal sealed class MonoPInvokeCallbackAttribute : Attribute
    {
        public MonoPInvokeCallbackAttribute(Type delegateType) { DelegateType = delegateType; }

        public Type DelegateType { get; private set; }
    }

    /// <summary>
    /// What both object types share: the native handle, the events, the metadata the wrapper owns
    /// and the helpers that turn codes into exceptions.
    /// </summary>
    public abstract class ZandoObject : IDisposable
    {
        private IntPtr handle;
        private int released;
        private GCHandle self;
        // Native metadata objects this wrapper has seen on its gestures and combinations.
        private readonly HashSet<IntPtr> claimedMetadata = new HashSet<IntPtr>();

        // A native metadata object can sit on gestures of two objects (an import shares it), so
        // it is freed when the last wrapper that saw it lets go.
        private static readonly Dictionary<IntPtr, int> metadataClaims = new Dictionary<IntPtr, int>();

        internal static readonly IntPtr DefaultMetadataCreator = Native.GestureRecognition_getDefaultMetadataCreatorFunction();

        // The callbacks handed to the library live as long as the process, so the library can
        // never call a collected delegate; the metadata pointer leads back to the object.
        internal static readonly Native.TrainingCallback TrainingUpdateThunk = OnTrainingUpdate;
        internal static readonly Native.TrainingCallback TrainingFinishThunk = OnTrainingFinish;
        internal static readonly Native.IOCallback SavingUpdateThunk = OnSavingUpdate;
        internal static readonly Native.IOCallback SavingFinishThunk = OnSavingFinish;
        internal static readonly Native.IOCallback LoadingUpdateThunk = OnLoadingUpdate;
        internal static readonly Native.IOCallback LoadingFinishThunk = OnLoadingFinish;

        internal ZandoObject(IntPtr nativeHandle, string operation)
        {
            if (nativeHandle == IntPtr.Zero) throw new ZandoException((int)ReturnCode.ResourceError, operation);
            handle = nativeHandle;
            // Weak: the library's reference must not keep the wrapper from being finalized.
            self = GCHandle.Alloc(this, GCHandleType.Weak);
        }

        ~ZandoObject() { Dispose(false); }

        /// <summary>The native object, for code that calls the flat C functions itself.</summary>
        public IntPtr Handle
        {
            get
            {
                if (handle == IntPtr.Zero) throw new ObjectDisposedException(GetType().Name);
                return handle;
            }
        }

        /// <summary>The metadata pointer the library hands back to this object's callbacks.</summary>
        internal IntPtr CallbackContext { get { return GCHandle.ToIntPtr(self); } }

        /// <summary>Training progress: the best score so far, from 0 to 1.</summary>
        public event Action<double> TrainingUpdated;
        /// <summary>Training has ended, with its final score.</summary>
        public event Action<double> TrainingFinished;
        /// <summary>Saving progress in percent.</summary>
        public event Action<int> SavingProgress;
        /// <summary>A background save has ended, with its return code.</summary>
        public event Action<int> SavingFinished;
        /// <summary>Loading progress in percent.</summary>
        public event Action<int> LoadingProgress;
        /// <summary>A background load has ended, with its return code.</summary>
        public event Action<int> LoadingFinished;

        /// <summary>The last exception an event handler threw, if any.</summary>
        public Exception LastCallbackError { get; private set; }

        public void Dispose()
        {
            Dispose(true);
            GC.SuppressFinalize(this);
        }

        protected virtual void Dispose(bool disposing)
        {
            // Only one caller releases, should two threads dispose at once.
            if (Interlocked.Exchange(ref released, 1) != 0) return;
            IntPtr current = handle;
            // A running load may still be filling the object: stop it before reading what it holds.
            CancelLoadingBeforeRelease(current);
            ClaimMetadata();
            IntPtr setMetadata = GetSetMetadataPointer(current);
            DeleteNative(current);
            handle = IntPtr.Zero;
            Native.GestureRecognition_deleteDefaultMetadata(setMetadata);
            lock (metadataClaims)
            {
                foreach (IntPtr metadata in claimedMetadata)
                {
                    int claims = metadataClaims[metadata] - 1;
                    if (claims > 0)
                    {
                        metadataClaims[metadata] = claims;
                        continue;
                    }
                    metadataClaims.Remove(metadata);
                    Native.GestureRecognition_deleteDefaultMetadata(metadata);
                }
                claimedMetadata.Clear();
            }
            if (self.IsAllocated) self.Free();
        }

        internal abstract void CancelLoadingBeforeRelease(IntPtr nativeHandle);
        internal abstract IntPtr GetSetMetadataPointer(IntPtr nativeHandle);
        internal abstract void DeleteNative(IntPtr nativeHandle);
        // Claims the metadata of every gesture and combination the object holds now.
        internal abstract void ClaimAllMetadata();

        // Called before anything that could drop a metadata pointer from the object (deleting,
        // replacing, loading), so that no object the wrapper must free is lost from sight.
        internal void ClaimMetadata()
        {
            if (IsLoading) return;
            ClaimAllMetadata();
        }

        internal void Claim(IntPtr metadata)
        {
            if (metadata == IntPtr.Zero) return;
            lock (metadataClaims)
            {
                if (!claimedMetadata.Add(metadata)) return;
                int claims;
                metadataClaims.TryGetValue(metadata, out claims);
                metadataClaims[metadata] = claims + 1;
            }
        }

        public abstract bool IsLoading { get; }

        // ---- Metadata as bytes ----

        // A new native metadata object holding the bytes; null bytes give no object.
        internal static IntPtr CreateMetadata(byte[] bytes)
        {
            if (bytes == null) return IntPtr.Zero;
            IntPtr metadata = Native.GestureRecognition_createDefaultMetadata();
            if (metadata == IntPtr.Zero) throw new ZandoException((int)ReturnCode.ResourceError, "CreateMetadata");
            int code = Native.GestureRecognition_setDefaultMetadataData(metadata, bytes, bytes.Length);
            if (code < 0)
            {
                Native.GestureRecognition_deleteDefaultMetadata(metadata);
                throw new ZandoException(code, "CreateMetadata");
            }
            return metadata;
        }

        internal static byte[] ReadMetadata(IntPtr metadata)
        {
            if (metadata == IntPtr.Zero) return null;
            int size = Native.GestureRecognition_getDefaultMetadataSize(metadata);
            byte[] bytes = new byte[Math.Max(size, 0)];
            int copied = Native.GestureRecognition_getDefaultMetadataData(metadata, bytes, bytes.Length);
            if (copied < bytes.Length) Array.Resize(ref bytes, Math.Max(copied, 0));
            return bytes;
        }

        // A new object holding the bytes, handed to `store`; freed again if the library refuses it.
        private static IntPtr Store(byte[] bytes, Func<IntPtr, int> store, string operation)
        {
            IntPtr metadata = CreateMetadata(bytes);
            int code = store(metadata);
            if (code < 0)
            {
                Native.GestureRecognition_deleteDefaultMetadata(metadata);
                throw new ZandoException(code, operation);
            }
            return metadata;
        }

        // Metadata of a gesture or a combination: claimed once stored.
        internal void StoreMetadata(byte[] bytes, Func<IntPtr, int> store, string operation)
        {
            Claim(Store(bytes, store, operation));
        }

        // The set's own metadata: the library deletes it when a load replaces it, so the wrapper
        // frees only the one a host replaces, and the current one with the object.
        internal void ReplaceSetMetadata(byte[] bytes, IntPtr previous, Func<IntPtr, int> store)
        {
            if (Store(bytes, store, "SetMetadata") != previous) Native.GestureRecognition_deleteDefaultMetadata(previous);
        }

        // ---- Helpers of the derived classes ----

        internal static int Check(int code, string operation)
        {
            if (code < 0) throw new ZandoException(code, operation);
            return code;
        }

        internal static double CheckScore(double score, string operation)
        {
            if (score < 0) throw new ZandoException((int)score, operation);
            return score;
        }

        // A null-terminated UTF-8 copy of the text; null stays null (the library refuses it).
        internal static byte[] Utf8(string text)
        {
            return text == null ? null : Encoding.UTF8.GetBytes(text + "\0");
        }

        // A name through its length and a copy (a pointer into the library could move meanwhile).
        internal static string ReadName(int length, Func<byte[], int> copy, string operation)
        {
            Check(length, operation);
            byte[] buffer = new byte[length + 1];
            copy(buffer);
            int end = Array.IndexOf(buffer, (byte)0);
            return Encoding.UTF8.GetString(buffer, 0, end < 0 ? length : end);
        }

        internal static double[] CheckMatrix(double[] matrix)
        {
            if (matrix == null) throw new ArgumentNullException("matrix");
            if (matrix.Length != 16) throw new ArgumentException("a pose matrix has 16 elements (column-major)", "matrix");
            return matrix;
        }

        internal static int Capacity(double[] probabilities, double[] similarities)
        {
            if (probabilities == null) throw new ArgumentNullException("probabilities");
            if (similarities == null) throw new ArgumentNullException("similarities");
            return Math.Min(probabilities.Length, similarities.Length);
        }

        internal static void Trim(ref double[] values, int count)
        {
            if (count >= 0 && count < values.Length) Array.Resize(ref values, count);
        }

        internal static Stroke ReadStroke(int length, Func<Stroke, int> read, string operation)
        {
            Check(length, operation);
            Stroke stroke = new Stroke
            {
                HandPositions = new Vector3[length],
                HandRotations = new Quaternion[length],
                HeadPositions = new Vector3[length],
                HeadRotations = new Quaternion[length],
            };
            int count = Check(read(stroke), operation);
            if (count < length)
            {
                Array.Resize(ref stroke.HandPositions, count);
                Array.Resize(ref stroke.HandRotations, count);
                Array.Resize(ref stroke.HeadPositions, count);
                Array.Resize(ref stroke.HeadRotations, count);
            }
            return stroke;
        }

        internal static MeanStroke ReadMeanStroke(int length, Func<MeanStroke, int> read, string operation)
        {
            Check(length, operation);
            MeanStroke mean = new MeanStroke { Positions = new Vector3[length], Rotations = new Quaternion[length] };
            int count = Check(read(mean), operation);
            if (count < length)
            {
                Array.Resize(ref mean.Positions, count);
                Array.Resize(ref mean.Rotations, count);
            }
            return mean;
        }

        // ---- Callbacks from the library ----

        private static ZandoObject Find(IntPtr context)
        {
            if (context == IntPtr.Zero) return null;
            return GCHandle.FromIntPtr(context).Target as ZandoObject;
        }

        private void Raise<T>(Action<T> handler, T value)
        {
            if (handler == null) return;
            try
            {
                handler(value);
            }
            catch (Exception error)
            {
                LastCallbackError = error;
            }
        }

        [MonoPInvokeCallback(typeof(Native.TrainingCallback))]
        private static void OnTrainingUpdate(double score, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.TrainingUpdated, score);
        }

        [MonoPInvokeCallback(typeof(Native.TrainingCallback))]
        private static void OnTrainingFinish(double score, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.TrainingFinished, score);
        }

        [MonoPInvokeCallback(typeof(Native.IOCallback))]
        private static void OnSavingUpdate(int percent, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.SavingProgress, percent);
        }

        [MonoPInvokeCallback(typeof(Native.IOCallback))]
        private static void OnSavingFinish(int code, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.SavingFinished, code);
        }

        [MonoPInvokeCallback(typeof(Native.IOCallback))]
        private static void OnLoadingUpdate(int percent, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.LoadingProgress, percent);
        }

        [MonoPInvokeCallback(typeof(Native.IOCallback))]
        private static void OnLoadingFinish(int code, IntPtr context)
        {
            ZandoObject target = Find(context);
            if (target != null) target.Raise(target.LoadingFinished, code);
        }
    }

    /// <summary>
    /// One recogniser. Record samples of the gestures a user defines, train, save, and identify
    /// finished strokes or a running motion.
    /// </summary>
    public sealed class GestureRecognition : ZandoObject
    {
        public GestureRecognition() : base(Native.GestureRecognition_create(), "GestureRecognition")
        {
            IntPtr h = Handle, context = CallbackContext;
            Native.GestureRecognition_setTrainingUpdateCallback(h, TrainingUpdateThunk);
            Native.GestureRecognition_setTrainingUpdateCallbackMetadata(h, context);
            Native.GestureRecognition_setTrainingFinishCallback(h, TrainingFinishThunk);
            Native.GestureRecognition_setTrainingFinishCallbackMetadata(h, context);
            Native.GestureRecognition_setSavingUpdateCallbackFunction(h, SavingUpdateThunk);
            Native.GestureRecognition_setSavingUpdateCallbackMetadata(h, context);
            Native.GestureRecognition_setSavingFinishCallbackFunction(h, SavingFinishThunk);
            Native.GestureRecognition_setSavingFinishCallbackMetadata(h, context);
            Native.GestureRecognition_setLoadingUpdateCallbackFunction(h, LoadingUpdateThunk);
            Native.GestureRecognition_setLoadingUpdateCallbackMetadata(h, context);
            Native.GestureRecognition_setLoadingFinishCallbackFunction(h, LoadingFinishThunk);
            Native.GestureRecognition_setLoadingFinishCallbackMetadata(h, context);
        }

        /// <summary>The library's version text.</summary>
        public static string Version
        {
            get
            {
                int length = Native.GestureRecognition_getVersionStringLength();
                return ReadName(length, buffer => Native.GestureRecognition_copyVersionString(buffer, buffer.Length), "Version");
            }
        }

        // ---- Stroke capture ----

        /// <summary>Starts a stroke: gesture >= 0 records a sample of it, -1 identifies the stroke at its end.</summary>
        public void StartStroke(Vector3 headPosition, Quaternion headRotation, int gesture = -1)
        {
            Check(TryStartStroke(headPosition, headRotation, gesture), "StartStroke");
        }

        public int TryStartStroke(Vector3 headPosition, Quaternion headRotation, int gesture = -1)
        {
            return Native.GestureRecognition_startStroke(Handle, ref headPosition, ref headRotation, gesture);
        }

        public void StartStroke(double[] headMatrix, int gesture = -1)
        {
            Check(TryStartStroke(headMatrix, gesture), "StartStroke");
        }

        public int TryStartStroke(double[] headMatrix, int gesture = -1)
        {
            return Native.GestureRecognition_startStrokeM(Handle, CheckMatrix(headMatrix), gesture);
        }

        public UpdateHeadPositionPolicy UpdateHeadPositionPolicy
        {
            get { return (UpdateHeadPositionPolicy)Check(Native.GestureRecognition_getUpdateHeadPositionPolicy(Handle), "UpdateHeadPositionPolicy"); }
            set { Check(Native.GestureRecognition_setUpdateHeadPositionPolicy(Handle, (int)value), "UpdateHeadPositionPolicy"); }
        }

        /// <summary>Replaces the latest head pose (every frame while a stroke runs).</summary>
        public void UpdateHeadPosition(Vector3 headPosition, Quaternion headRotation)
        {
            Native.GestureRecognition_updateHeadPositionQ(Handle, ref headPosition, ref headRotation);
        }

        public void UpdateHeadPosition(double[] headMatrix)
        {
            Native.GestureRecognition_updateHeadPositionM(Handle, CheckMatrix(headMatrix));
        }

        /// <summary>Appends the hand's position to the running stroke.</summary>
        public void ContdStroke(Vector3 handPosition) { Check(TryContdStroke(handPosition), "ContdStroke"); }

        public int TryContdStroke(Vector3 handPosition)
        {
            return Native.GestureRecognition_contdStroke(Handle, ref handPosition);
        }

        public void ContdStroke(Vector3 handPosition, Quaternion handRotation)
        {
            Check(TryContdStroke(handPosition, handRotation), "ContdStroke");
        }

        public int TryContdStroke(Vector3 handPosition, Quaternion handRotation)
        {
            return Native.GestureRecognition_contdStrokeQ(Handle, ref handPosition, ref handRotation);
        }

        /// <summary>Appends the hand's pose with its rotation as Euler angles in radians.</summary>
        public void ContdStrokeEuler(Vector3 handPosition, Vector3 handEuler)
        {
            Check(TryContdStrokeEuler(handPosition, handEuler), "ContdStrokeEuler");
        }

        public int TryContdStrokeEuler(Vector3 handPosition, Vector3 handEuler)
        {
            return Native.GestureRecognition_contdStrokeE(Handle, ref handPosition, ref handEuler);
        }

        public void ContdStroke(double[] handMatrix) { Check(TryContdStroke(handMatrix), "ContdStroke"); }

        public int TryContdStroke(double[] handMatrix)
        {
            return Native.GestureRecognition_contdStrokeM(Handle, CheckMatrix(handMatrix));
        }

        /// <summary>Ends the stroke: the index of the recorded or identified gesture.</summary>
        public int EndStroke()
        {
            StrokeInfo info;
            return EndStroke(out info);
        }

        public int EndStroke(out StrokeInfo info) { return Check(TryEndStroke(out info), "EndStroke"); }

        public int TryEndStroke(out StrokeInfo info)
        {
            info = new StrokeInfo();
            return Native.GestureRecognition_endStroke(Handle, out info.Position, out info.Scale, out info.Direction0,
                                                       out info.Direction1, out info.Direction2);
        }

        /// <summary>Ends the stroke; probabilities holds one value per gesture.</summary>
        public int EndStrokeAndGetAllProbabilities(out double[] probabilities, out StrokeInfo info)
        {
            probabilities = new double[Math.Max(NumberOfGestures, 0)];
            int count = probabilities.Length;
            info = new StrokeInfo();
            int result = Check(Native.GestureRecognition_endStrokeAndGetAllProbabilities(
                Handle, probabilities, ref count, out info.Position, out info.Scale, out info.Direction0,
                out info.Direction1, out info.Direction2), "EndStrokeAndGetAllProbabilities");
            Trim(ref probabilities, count);
            return result;
        }

        /// <summary>Ends the stroke; similarity says how close it came to the gesture's samples (0 to 1).</summary>
        public int EndStrokeAndGetSimilarity(out double similarity, out StrokeInfo info)
        {
            return Check(TryEndStrokeAndGetSimilarity(out similarity, out info), "EndStrokeAndGetSimilarity");
        }

        public int TryEndStrokeAndGetSimilarity(out double similarity, out StrokeInfo info)
        {
            info = new StrokeInfo();
            return Native.GestureRecognition_endStrokeAndGetSimilarity(Handle, out similarity, out info.Position, out info.Scale,
                                                                      out info.Direction0, out info.Direction1, out info.Direction2);
        }

        public int EndStrokeAndGetAllProbabilitiesAndSimilarities(out double[] probabilities, out double[] similarities,
                                                                  out StrokeInfo info)
        {
            probabilities = new double[Math.Max(NumberOfGestures, 0)];
            similarities = new double[probabilities.Length];
            int count;
            int result = Check(TryEndStrokeAndGetAllProbabilitiesAndSimilarities(probabilities, similarities, out count, out info),
                               "EndStrokeAndGetAllProbabilitiesAndSimilarities");
            Trim(ref probabilities, count);
            Trim(ref similarities, count);
            return result;
        }

        /// <summary>The same into the caller's arrays; count is the number of values written.</summary>
        public int TryEndStrokeAndGetAllProbabilitiesAndSimilarities(double[] probabilities, double[] similarities,
                                                                     out int count, out StrokeInfo info)
        {
            count = Capacity(probabilities, similarities);
            info = new StrokeInfo();
            return Native.GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(
                Handle, probabilities, similarities, ref count, out info.Position, out info.Scale, out info.Direction0,
                out info.Direction1, out info.Direction2);
        }

        public bool IsStrokeStarted { get { return Native.GestureRecognition_isStrokeStarted(Handle) != 0; } }

        /// <summary>Keeps at most maxPoints points, none older than maxAgeMs; returns the points left.</summary>
        public int PruneStroke(int maxPoints, int maxAgeMs)
        {
            return Check(Native.GestureRecognition_pruneStroke(Handle, maxPoints, maxAgeMs), "PruneStroke");
        }

        public void CancelStroke() { Check(Native.GestureRecognition_cancelStroke(Handle), "CancelStroke"); }

        // ---- Continuous identification over a sliding window (call every frame) ----

        /// <summary>The gesture the last ContdIdentificationPeriod ms of the stroke show.</summary>
        public int ContdIdentify(Vector3 headPosition, Quaternion headRotation)
        {
            double similarity;
            return ContdIdentify(headPosition, headRotation, out similarity);
        }

        public int ContdIdentify(Vector3 headPosition, Quaternion headRotation, out double similarity)
        {
            return Check(TryContdIdentify(headPosition, headRotation, out similarity), "ContdIdentify");
        }

        public int TryContdIdentify(Vector3 headPosition, Quaternion headRotation, out double similarity)
        {
            return Native.GestureRecognition_contdIdentify(Handle, ref headPosition, ref headRotation, out similarity);
        }

        public int ContdIdentify(double[] headMatrix, out double similarity)
        {
            return Check(TryContdIdentify(headMatrix, out similarity), "ContdIdentify");
        }

        public int TryContdIdentify(double[] headMatrix, out double similarity)
        {
            return Native.GestureRecognition_contdIdentifyM(Handle, CheckMatrix(headMatrix), out similarity);
        }

        public int ContdIdentifyAndGetAllProbabilitiesAndSimilarities(Vector3 headPosition, Quaternion headRotation,
                                                                      out double[] probabilities, out double[] similarities)
        {
            probabilities = new double[Math.Max(NumberOfGestures, 0)];
            similarities = new double[probabilities.Length];
            int count;
            int result = Check(TryContdIdentifyAndGetAllProbabilitiesAndSimilarities(
                headPosition, headRotation, probabilities, similarities, out count), "ContdIdentifyAndGetAllProbabilitiesAndSimilarities");
            Trim(ref probabilities, count);
            Trim(ref similarities, count);
            return result;
        }

        public int TryContdIdentifyAndGetAllProbabilitiesAndSimilarities(Vector3 headPosition, Quaternion headRotation,
                                                                         double[] probabilities, double[] similarities,
                                                                         out int count)
        {
            count = Capacity(probabilities, similarities);
            return Native.GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(
                Handle, ref headPosition, ref headRotation, probabilities, similarities, ref count);
        }

        public int TryContdIdentifyAndGetAllProbabilitiesAndSimilarities(double[] headMatrix, double[] probabilities,
                                                                         double[] similarities, out int count)
        {
            count = Capacity(probabilities, similarities);
            return Native.GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(
                Handle, CheckMatrix(headMatrix), probabilities, similarities, ref count);
        }

        /// <summary>Identifies the window and says where it was made.</summary>
        public int ContdIdentifyAndGetStroke(Vector3 headPosition, Quaternion headRotation, out double similarity,
                                             out StrokeInfo info)
        {
            return Check(TryContdIdentifyAndGetStroke(headPosition, headRotation, out similarity, out info),
                         "ContdIdentifyAndGetStroke");
        }

        public int TryContdIdentifyAndGetStroke(Vector3 headPosition, Quaternion headRotation, out double similarity,
                                                out StrokeInfo info)
        {
            info = new StrokeInfo();
            return Native.GestureRecognition_contdIdentifyAndGetStroke(
                Handle, ref headPosition, ref headRotation, out similarity, out info.Position, out info.Scale,
                out info.Direction0, out info.Direction1, out info.Direction2);
        }

        public int TryContdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
            Vector3 headPosition, Quaternion headRotation, double[] probabilities, double[] similarities, out int count,
            out StrokeInfo info)
        {
            count = Capacity(probabilities, similarities);
            info = new StrokeInfo();
            return Native.GestureRecognition_contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
                Handle, ref headPosition, ref headRotation, probabilities, similarities, ref count, out info.Position,
                out info.Scale, out info.Direction0, out info.Direction1, out info.Direction2);
        }

        /// <summary>Stores the window of a stroke started with a gesture index as a continuous sample.</summary>
        public void ContdRecord(Vector3 headPosition, Quaternion headRotation)
        {
            Check(TryContdRecord(headPosition, headRotation), "ContdRecord");
        }

        public int TryContdRecord(Vector3 headPosition, Quaternion headRotation)
        {
            return Native.GestureRecognition_contdRecord(Handle, ref headPosition, ref headRotation);
        }

        public void ContdRecord(double[] headMatrix) { Check(TryContdRecord(headMatrix), "ContdRecord"); }

        public int TryContdRecord(double[] headMatrix)
        {
            return Native.GestureRecognition_contdRecordM(Handle, CheckMatrix(headMatrix));
        }

        /// <summary>The window of continuous identification, in milliseconds.</summary>
        public int ContdIdentificationPeriod
        {
            get { return Native.GestureRecognition_getContdIdentificationPeriod(Handle); }
            set { Check(Native.GestureRecognition_setContdIdentificationPeriod(Handle, value), "ContdIdentificationPeriod"); }
        }

        /// <summary>How many recent continuous results are smoothed.</summary>
        public int ContdIdentificationSmoothing
        {
            get { return Native.GestureRecognition_getContdIdentificationSmoothing(Handle); }
            set { Check(Native.GestureRecognition_setContdIdentificationSmoothing(Handle, value), "ContdIdentificationSmoothing"); }
        }

        // ---- Continuous detection: one answer per performed gesture (call every frame) ----

        /// <summary>
        /// A performance of a gesture has completed: the gesture's index and the confidence, from 0
        /// to 1. Raised by ContdDetect and TryContdDetect on the one frame that detects it, on the
        /// thread that made the call and before the call returns (not on a worker thread like the
        /// training and file events); an exception the handler throws reaches that caller.
        /// </summary>
        public event Action<int, double> GestureDetected;

        /// <summary>
        /// From now on the object reads the host's frame time instead of the system clock wherever
        /// it reads the clock (stroke points, the continuous window, detection): seconds from any
        /// origin, never decreasing; set it every frame before the frame's points. A negative value
        /// returns to the system clock.
        /// </summary>
        public void SetHostTime(double seconds)
        {
            Check(Native.GestureRecognition_setHostTime(Handle, seconds), "SetHostTime");
        }

        /// <summary>
        /// Call once a frame, after the frame's hand pose went into a stroke started with gesture -1.
        /// True on the one frame on which a performance of a gesture completed, with its index and a
        /// confidence from 0 to 1 (and GestureDetected raised); false on every other frame, with -1
        /// and 0. Works on a trained set, and in the enhanced mode right after recording.
        /// </summary>
        public bool ContdDetect(Vector3 headPosition, Quaternion headRotation, out int gesture, out double confidence)
        {
            return Check(TryContdDetect(headPosition, headRotation, out gesture, out confidence), "ContdDetect") == 1;
        }

        /// <summary>
        /// The same, returning the library's int: 1 detected, 0 not, or a negative code (for example
        /// NoStrokeStarted, TrainingInProgress, LoadingInProgress, or NoGestures when no enabled
        /// gesture has samples). Allocates nothing.
        /// </summary>
        public int TryContdDetect(Vector3 headPosition, Quaternion headRotation, out int gesture, out double confidence)
        {
            int code = Native.GestureRecognition_contdDetect(Handle, ref headPosition, ref headRotation, out gesture, out confidence);
            return Detected(code, ref gesture, ref confidence);
        }

        public bool ContdDetect(double[] headMatrix, out int gesture, out double confidence)
        {
            return Check(TryContdDetect(headMatrix, out gesture, out confidence), "ContdDetect") == 1;
        }

        public int TryContdDetect(double[] headMatrix, out int gesture, out double confidence)
        {
            int code = Native.GestureRecognition_contdDetectM(Handle, CheckMatrix(headMatrix), out gesture, out confidence);
            return Detected(code, ref gesture, ref confidence);
        }

        /// <summary>
        /// How willing detection is: 0 the strictest, 1 the most willing; the default 0.5 is the
        /// measured setting. It shifts the thresholds learned from the samples and is saved in the
        /// file when not the default. A value outside 0 to 1 throws (InvalidParameter).
        /// </summary>
        public double DetectionSensitivity
        {
            get { return Native.GestureRecognition_getDetectionSensitivity(Handle); }
            set { Check(Native.GestureRecognition_setDetectionSensitivity(Handle, value), "DetectionSensitivity"); }
        }

        // Outputs are defined on every frame, whatever the library left in them; a detection is
        // announced once, from the call that made it.
        private int Detected(int code, ref int gesture, ref double confidence)
        {
            if (code != 1)
            {
                gesture = -1;
                confidence = 0;
                return code;
            }
            Action<int, double> handler = GestureDetected;
            if (handler != null) handler(gesture, confidence);
            return code;
        }

        // ---- Gestures and their samples ----

        public int NumberOfGestures { get { return Check(Native.GestureRecognition_numberOfGestures(Handle), "NumberOfGestures"); } }

        /// <summary>Appends a gesture and returns its index; metadata may be null.</summary>
        public int CreateGesture(string name, byte[] metadata = null)
        {
            int index = -1;
            StoreMetadata(metadata, m => index = Native.GestureRecognition_createGesture(Handle, Utf8(name), m), "CreateGesture");
            return index;
        }

        public void DeleteGesture(int index)
        {
            ClaimMetadata();
            Check(Native.GestureRecognition_deleteGesture(Handle, index), "DeleteGesture");
        }

        public void DeleteAllGestures()
        {
            ClaimMetadata();
            Check(Native.GestureRecognition_deleteAllGestures(Handle), "DeleteAllGestures");
        }

        /// <summary>The score of the last training: the share of samples identified, from 0 to 1.</summary>
        public double RecognitionScore { get { return Native.GestureRecognition_recognitionScore(Handle); } }

        public string GetGestureName(int index)
        {
            return ReadName(Native.GestureRecognition_getGestureNameLength(Handle, index),
                            buffer => Native.GestureRecognition_copyGestureName(Handle, index, buffer, buffer.Length), "GetGestureName");
        }

        public void SetGestureName(int index, string name)
        {
            Check(Native.GestureRecognition_setGestureName(Handle, index, Utf8(name)), "SetGestureName");
        }

        /// <summary>The gesture's metadata bytes, or null when it has none (or the index is bad).</summary>
        public byte[] GetGestureMetadata(int index)
        {
            return ReadMetadata(Native.GestureRecognition_getGestureMetadata(Handle, index));
        }

        public void SetGestureMetadata(int index, byte[] metadata)
        {
            ClaimMetadata();
            StoreMetadata(metadata, m => Native.GestureRecognition_setGestureMetadata(Handle, index, m), "SetGestureMetadata");
        }

        /// <summary>Disabled gestures are not identified.</summary>
        public bool GetGestureEnabled(int index) { return Native.GestureRecognition_getGestureEnabled(Handle, index) != 0; }

        public void SetGestureEnabled(int index, bool enabled)
        {
            Check(Native.GestureRecognition_setGestureEnabled(Handle, index, enabled ? 1 : 0), "SetGestureEnabled");
        }

        public int GetGestureNumberOfSamples(int index)
        {
            return Check(Native.GestureRecognition_getGestureNumberOfSamples(Handle, index), "GetGestureNumberOfSamples");
        }

        public SampleType GetGestureSampleType(int gesture, int sample)
        {
            return (SampleType)Check(Native.GestureRecognition_getGestureSampleType(Handle, gesture, sample), "GetGestureSampleType");
        }

        public void SetGestureSampleType(int gesture, int sample, SampleType type)
        {
            Check(Native.GestureRecognition_setGestureSampleType(Handle, gesture, sample, (int)type), "SetGestureSampleType");
        }

        /// <summary>Number of points of a sample as recorded, or after processing.</summary>
        public int GetGestureSampleLength(int gesture, int sample, bool processed = false)
        {
            return Check(Native.GestureRecognition_getGestureSampleLength(Handle, gesture, sample, processed ? 1 : 0),
                         "GetGestureSampleLength");
        }

        public Stroke GetGestureSampleStroke(int gesture, int sample, bool processed = false)
        {
            int flag = processed ? 1 : 0;
            return ReadStroke(Native.GestureRecognition_getGestureSampleLength(Handle, gesture, sample, flag),
                              s => Native.GestureRecognition_getGestureSampleStroke(
                                  Handle, gesture, sample, flag, s.HandPositions.Length, s.HandPositions,
                                  s.HandRotations, s.HeadPositions, s.HeadRotations), "GetGestureSampleStroke");
        }

        public int GetGestureMeanLength(int gesture)
        {
            return Check(Native.GestureRecognition_getGestureMeanLength(Handle, gesture), "GetGestureMeanLength");
        }

        public MeanStroke GetGestureMeanStroke(int gesture)
        {
            return ReadMeanStroke(Native.GestureRecognition_getGestureMeanLength(Handle, gesture),
                                  m => Native.GestureRecognition_getGestureMeanStroke(
                                      Handle, gesture, m.Positions, m.Rotations, m.Positions.Length, out m.Position,
                                      out m.Rotation, out m.Scale), "GetGestureMeanStroke");
        }

        public void DeleteGestureSample(int gesture, int sample)
        {
            Check(Native.GestureRecognition_deleteGestureSample(Handle, gesture, sample), "DeleteGestureSample");
        }

        public void DeleteAllGestureSamples(int gesture)
        {
            Check(Native.GestureRecognition_deleteAllGestureSamples(Handle, gesture), "DeleteAllGestureSamples");
        }

        /// <summary>Copies the samples of one of another recogniser's gestures into one of this one's.</summary>
        public void ImportGestureSamples(GestureRecognition from, int fromGesture, int intoGesture)
        {
            if (from == null) throw new ArgumentNullException("from");
            Check(Native.GestureRecognition_importGestureSamples(Handle, from.Handle, fromGesture, intoGesture),
                  "ImportGestureSamples");
        }

        /// <summary>Adds another recogniser's gestures (samples join a gesture of the same name).</summary>
        public void ImportGestures(GestureRecognition from)
        {
            if (from == null) throw new ArgumentNullException("from");
            Check(Native.GestureRecognition_importGestures(Handle, from.Handle), "ImportGestures");
            // The new gestures share the other object's metadata: claimed now, it outlives that object.
            ClaimMetadata();
        }

        // ---- Files ----

        public void SaveToFile(string path) { Check(Native.GestureRecognition_saveToFile(Handle, Utf8(path)), "SaveToFile"); }

        /// <summary>Replaces everything by the file's content.</summary>
        public void LoadFromFile(string path)
        {
            ClaimMetadata();
            Check(Native.GestureRecognition_loadFromFile(Handle, Utf8(path), DefaultMetadataCreator), "LoadFromFile");
        }

        public void LoadFromBuffer(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            ClaimMetadata();
            Check(Native.GestureRecognition_loadFromBuffer(Handle, file, file.Length, DefaultMetadataCreator), "LoadFromBuffer");
        }

        /// <summary>Adds the file's gestures to these (samples join a gesture of the same name).</summary>
        public void ImportFromFile(string path)
        {
            Check(Native.GestureRecognition_importFromFile(Handle, Utf8(path), DefaultMetadataCreator), "ImportFromFile");
        }

        public void ImportFromBuffer(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            Check(Native.GestureRecognition_importFromBuffer(Handle, file, file.Length, DefaultMetadataCreator), "ImportFromBuffer");
        }

        /// <summary>Saves on a worker thread; SavingProgress and SavingFinished report.</summary>
        public void SaveToFileAsync(string path)
        {
            Check(Native.GestureRecognition_saveToFileAsync(Handle, Utf8(path)), "SaveToFileAsync");
        }

        public bool IsSaving { get { return Native.GestureRecognition_isSaving(Handle) != 0; } }

        public void CancelSaving() { Check(Native.GestureRecognition_cancelSaving(Handle), "CancelSaving"); }

        /// <summary>Loads on a worker thread; LoadingProgress and LoadingFinished report.</summary>
        public void LoadFromFileAsync(string path)
        {
            ClaimMetadata();
            Check(Native.GestureRecognition_loadFromFileAsync(Handle, Utf8(path), DefaultMetadataCreator), "LoadFromFileAsync");
        }

        /// <summary>The library copies the bytes; the array may change once this returns.</summary>
        public void LoadFromBufferAsync(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            ClaimMetadata();
            Check(Native.GestureRecognition_loadFromBufferAsync(Handle, file, file.Length, DefaultMetadataCreator),
                  "LoadFromBufferAsync");
        }

        public override bool IsLoading { get { return Native.GestureRecognition_isLoading(Handle) != 0; } }

        public void CancelLoading() { Check(Native.GestureRecognition_cancelLoading(Handle), "CancelLoading"); }

        // ---- Training ----

        /// <summary>Trains on a worker thread; TrainingUpdated and TrainingFinished report.</summary>
        public void StartTraining() { Check(Native.GestureRecognition_startTraining(Handle), "StartTraining"); }

        public bool IsTraining { get { return Native.GestureRecognition_isTraining(Handle) != 0; } }

        /// <summary>Stops a running training and waits for it.</summary>
        public void StopTraining() { Check(Native.GestureRecognition_stopTraining(Handle), "StopTraining"); }

        /// <summary>Training time limit in seconds.</summary>
        public int MaxTrainingTime
        {
            get { return Native.GestureRecognition_getMaxTrainingTime(Handle); }
            set { Native.GestureRecognition_setMaxTrainingTime(Handle, value); }
        }

        /// <summary>A pinned training parameter: its value, or -1 when it is not set.</summary>
        public int GetTrainingParameter(int id)
        {
            int value = Native.GestureRecognition_getTrainingParameter(Handle, id);
            return value == (int)ReturnCode.InvalidParameter ? Check(value, "GetTrainingParameter") : value;
        }

        public void SetTrainingParameter(int id, int value)
        {
            Check(Native.GestureRecognition_setTrainingParameter(Handle, id, value), "SetTrainingParameter");
        }

        // ---- Frame of reference: which head rotations are taken out of the motion ----

        public bool IgnoreHeadRotationX
        {
            get { return Native.GestureRecognition_getIgnoreHeadRotationX(Handle) != 0; }
            set { Native.GestureRecognition_setIgnoreHeadRotationX(Handle, value ? 1 : 0); }
        }

        public bool IgnoreHeadRotationY
        {
            get { return Native.GestureRecognition_getIgnoreHeadRotationY(Handle) != 0; }
            set { Native.GestureRecognition_setIgnoreHeadRotationY(Handle, value ? 1 : 0); }
        }

        public bool IgnoreHeadRotationZ
        {
            get { return Native.GestureRecognition_getIgnoreHeadRotationZ(Handle) != 0; }
            set { Native.GestureRecognition_setIgnoreHeadRotationZ(Handle, value ? 1 : 0); }
        }

        /// <summary>The raw setting behind IgnoreHeadRotationX, stored as given.</summary>
        public int RotationalFrameOfReferenceX
        {
            get { return Native.GestureRecognition_getRotationalFrameOfReferenceX(Handle); }
            set { Native.GestureRecognition_setRotationalFrameOfReferenceX(Handle, value); }
        }

        public int RotationalFrameOfReferenceY
        {
            get { return Native.GestureRecognition_getRotationalFrameOfReferenceY(Handle); }
            set { Native.GestureRecognition_setRotationalFrameOfReferenceY(Handle, value); }
        }

        public int RotationalFrameOfReferenceZ
        {
            get { return Native.GestureRecognition_getRotationalFrameOfReferenceZ(Handle); }
            set { Native.GestureRecognition_setRotationalFrameOfReferenceZ(Handle, value); }
        }

        public RotationOrder RotationalFrameOfReferenceRotationOrder
        {
            get { return (RotationOrder)Native.GestureRecognition_getRotationalFrameOfReferenceRotationOrder(Handle); }
            set { Native.GestureRecognition_setRotationalFrameOfReferenceRotationOrder(Handle, (int)value); }
        }

        // ---- The set's metadata and the enhanced mode ----

        /// <summary>Bytes kept with the whole set and saved with it; null when there are none.</summary>
        public byte[] Metadata
        {
            get { return ReadMetadata(Native.GestureRecognition_getMetadata(Handle)); }
            set
            {
                ReplaceSetMetadata(value, Native.GestureRecognition_getMetadata(Handle),
                                   m => Native.GestureRecognition_setMetadata(Handle, m));
            }
        }

        /// <summary>
        /// Identification by the shape of every stored sample: holds up with 2 to 10 samples per
        /// gesture and needs no training (training in this mode ends at once, without a network,
        /// scored by how the samples identify one another). Saved in the file.
        /// </summary>
        public bool EnhancedRecognition
        {
            get { return Native.GestureRecognition_getEnhancedRecognition(Handle) != 0; }
            set { Check(Native.GestureRecognition_setEnhancedRecognition(Handle, value ? 1 : 0), "EnhancedRecognition"); }
        }

        // ---- Release ----

        internal override void CancelLoadingBeforeRelease(IntPtr h) { Native.GestureRecognition_cancelLoading(h); }
        internal override IntPtr GetSetMetadataPointer(IntPtr h) { return Native.GestureRecognition_getMetadata(h); }
        internal override void DeleteNative(IntPtr h) { Native.GestureRecognition_delete(h); }

        internal override void ClaimAllMetadata()
        {
            IntPtr h = Handle;
            int count = Native.GestureRecognition_numberOfGestures(h);
            for (int i = 0; i < count; ++i) Claim(Native.GestureRecognition_getGestureMetadata(h, i));
        }
    }

    /// <summary>
    /// Several recognisers driven as one object, one part for each hand (or hand and head), and
    /// combinations that name one gesture per part. Operations on a part take its index first.
    /// </summary>
    public sealed class GestureCombinations : ZandoObject
    {
        public GestureCombinations(int numberOfParts)
            : base(Native.GestureCombinations_create(numberOfParts), "GestureCombinations")
        {
            IntPtr h = Handle, context = CallbackContext;
            Native.GestureCombinations_setTrainingUpdateCallback(h, TrainingUpdateThunk);
            Native.GestureCombinations_setTrainingUpdateCallbackMetadata(h, context);
            Native.GestureCombinations_setTrainingFinishCallback(h, TrainingFinishThunk);
            Native.GestureCombinations_setTrainingFinishCallbackMetadata(h, context);
            Native.GestureCombinations_setSavingUpdateCallbackFunction(h, SavingUpdateThunk);
            Native.GestureCombinations_setSavingUpdateCallbackMetadata(h, context);
            Native.GestureCombinations_setSavingFinishCallbackFunction(h, SavingFinishThunk);
            Native.GestureCombinations_setSavingFinishCallbackMetadata(h, context);
            Native.GestureCombinations_setLoadingUpdateCallbackFunction(h, LoadingUpdateThunk);
            Native.GestureCombinations_setLoadingUpdateCallbackMetadata(h, context);
            Native.GestureCombinations_setLoadingFinishCallbackFunction(h, LoadingFinishThunk);
            Native.GestureCombinations_setLoadingFinishCallbackMetadata(h, context);
        }

        public static string Version
        {
            get
            {
                int length = Native.GestureCombinations_getVersionStringLength();
                return ReadName(length, buffer => Native.GestureCombinations_copyVersionString(buffer, buffer.Length), "Version");
            }
        }

        // ---- Parts ----

        public int NumberOfParts { get { return Check(Native.GestureCombinations_numberOfParts(Handle), "NumberOfParts"); } }

        /// <summary>False for a bad index.</summary>
        public bool GetPartEnabled(int part) { return Native.GestureCombinations_getPartEnabled(Handle, part) != 0; }

        /// <summary>Disabled parts neither train nor count in identification.</summary>
        public void SetPartEnabled(int part, bool enabled)
        {
            Check(Native.GestureCombinations_setPartEnabled(Handle, part, enabled ? 1 : 0), "SetPartEnabled");
        }

        // ---- Strokes of one part ----

        /// <summary>Starts a part's stroke: gesture >= 0 records a sample of it, -1 identifies.</summary>
        public void StartStroke(int part, Vector3 headPosition, Quaternion headRotation, int gesture = -1)
        {
            Check(TryStartStroke(part, headPosition, headRotation, gesture), "StartStroke");
        }

        public int TryStartStroke(int part, Vector3 headPosition, Quaternion headRotation, int gesture = -1)
        {
            return Native.GestureCombinations_startStroke(Handle, part, ref headPosition, ref headRotation, gesture);
        }

        public void StartStroke(int part, double[] headMatrix, int gesture = -1)
        {
            Check(TryStartStroke(part, headMatrix, gesture), "StartStroke");
        }

        public int TryStartStroke(int part, double[] headMatrix, int gesture = -1)
        {
            return Native.GestureCombinations_startStrokeM(Handle, part, CheckMatrix(headMatrix), gesture);
        }

        /// <summary>The head pose for all parts.</summary>
        public void UpdateHeadPosition(Vector3 headPosition, Quaternion headRotation)
        {
            Native.GestureCombinations_updateHeadPositionQ(Handle, ref headPosition, ref headRotation);
        }

        public void UpdateHeadPosition(double[] headMatrix)
        {
            Native.GestureCombinations_updateHeadPositionM(Handle, CheckMatrix(headMatrix));
        }

        public void ContdStroke(int part, Vector3 handPosition) { Check(TryContdStroke(part, handPosition), "ContdStroke"); }

        public int TryContdStroke(int part, Vector3 handPosition)
        {
            return Native.GestureCombinations_contdStroke(Handle, part, ref handPosition);
        }

        public void ContdStroke(int part, Vector3 handPosition, Quaternion handRotation)
        {
            Check(TryContdStroke(part, handPosition, handRotation), "ContdStroke");
        }

        public int TryContdStroke(int part, Vector3 handPosition, Quaternion handRotation)
        {
            return Native.GestureCombinations_contdStrokeQ(Handle, part, ref handPosition, ref handRotation);
        }

        public void ContdStrokeEuler(int part, Vector3 handPosition, Vector3 handEuler)
        {
            Check(TryContdStrokeEuler(part, handPosition, handEuler), "ContdStrokeEuler");
        }

        public int TryContdStrokeEuler(int part, Vector3 handPosition, Vector3 handEuler)
        {
            return Native.GestureCombinations_contdStrokeE(Handle, part, ref handPosition, ref handEuler);
        }

        public void ContdStroke(int part, double[] handMatrix) { Check(TryContdStroke(part, handMatrix), "ContdStroke"); }

        public int TryContdStroke(int part, double[] handMatrix)
        {
            return Native.GestureCombinations_contdStrokeM(Handle, part, CheckMatrix(handMatrix));
        }

        /// <summary>Ends the part's stroke; its result waits for IdentifyGestureCombination.</summary>
        public int EndStroke(int part)
        {
            StrokeInfo info;
            return EndStroke(part, out info);
        }

        public int EndStroke(int part, out StrokeInfo info) { return Check(TryEndStroke(part, out info), "EndStroke"); }

        public int TryEndStroke(int part, out StrokeInfo info)
        {
            info = new StrokeInfo();
            return Native.GestureCombinations_endStroke(Handle, part, out info.Position, out info.Scale, out info.Direction0,
                                                        out info.Direction1, out info.Direction2);
        }

        /// <summary>The part's last probabilities and similarities, one per gesture of the part.</summary>
        public void GetPartProbabilitiesAndSimilarities(int part, out double[] probabilities, out double[] similarities)
        {
            probabilities = new double[Math.Max(NumberOfGestures(part), 0)];
            similarities = new double[probabilities.Length];
            int count;
            Check(TryGetPartProbabilitiesAndSimilarities(part, probabilities, similarities, out count),
                  "GetPartProbabilitiesAndSimilarities");
            Trim(ref probabilities, count);
            Trim(ref similarities, count);
        }

        public int TryGetPartProbabilitiesAndSimilarities(int part, double[] probabilities, double[] similarities,
                                                          out int count)
        {
            count = Capacity(probabilities, similarities);
            return Native.GestureCombinations_getPartProbabilitiesAndSimilarities(Handle, part, probabilities, similarities,
                                                                                 ref count);
        }

        public bool IsStrokeStarted(int part) { return Native.GestureCombinations_isStrokeStarted(Handle, part) != 0; }

        public int PruneStroke(int part, int maxPoints, int maxAgeMs)
        {
            return Check(Native.GestureCombinations_pruneStroke(Handle, part, maxPoints, maxAgeMs), "PruneStroke");
        }

        public void CancelStroke(int part) { Check(Native.GestureCombinations_cancelStroke(Handle, part), "CancelStroke"); }

        // ---- Combinations identified ----

        /// <summary>The combination that fits the parts' finished strokes best (each result is used once).</summary>
        public int IdentifyGestureCombination()
        {
            double probability, similarity;
            double[] partProbabilities, partSimilarities;
            return IdentifyGestureCombination(out probability, out similarity, out partProbabilities, out partSimilarities);
        }

        public int IdentifyGestureCombination(out double probability, out double similarity, out double[] partProbabilities,
                                              out double[] partSimilarities)
        {
            partProbabilities = new double[Math.Max(NumberOfParts, 0)];
            partSimilarities = new double[partProbabilities.Length];
            return Check(TryIdentifyGestureCombination(out probability, out similarity, partProbabilities, partSimilarities),
                         "IdentifyGestureCombination");
        }

        /// <summary>The per-part arrays need room for one value per part.</summary>
        public int TryIdentifyGestureCombination(out double probability, out double similarity, double[] partProbabilities,
                                                 double[] partSimilarities)
        {
            CheckPartRoom(partProbabilities, partSimilarities);
            return Native.GestureCombinations_identifyGestureCombination(Handle, out probability, out similarity,
                                                                        partProbabilities, partSimilarities);
        }

        /// <summary>The combination the parts' running strokes show (call every frame).</summary>
        public int ContdIdentify(Vector3 headPosition, Quaternion headRotation, out double similarity)
        {
            double[] partProbabilities = new double[Math.Max(NumberOfParts, 0)];
            double[] partSimilarities = new double[partProbabilities.Length];
            return Check(TryContdIdentify(headPosition, headRotation, out similarity, partProbabilities, partSimilarities),
                         "ContdIdentify");
        }

        public int TryContdIdentify(Vector3 headPosition, Quaternion headRotation, out double similarity,
                                    double[] partProbabilities, double[] partSimilarities)
        {
            CheckPartRoom(partProbabilities, partSimilarities);
            return Native.GestureCombinations_contdIdentify(Handle, ref headPosition, ref headRotation, out similarity,
                                                           partProbabilities, partSimilarities);
        }

        public int TryContdIdentify(double[] headMatrix, out double similarity, double[] partProbabilities,
                                    double[] partSimilarities)
        {
            CheckPartRoom(partProbabilities, partSimilarities);
            return Native.GestureCombinations_contdIdentifyM(Handle, CheckMatrix(headMatrix), out similarity,
                                                            partProbabilities, partSimilarities);
        }

        /// <summary>Where the part's last continuous window was.</summary>
        public StrokeInfo ContdIdentifyGetLastStrokeInfo(int part)
        {
            StrokeInfo info = new StrokeInfo();
            Check(Native.GestureCombinations_contdIdentifyGetLastStrokeInfo(
                Handle, part, out info.Position, out info.Scale, out info.Direction0, out info.Direction1,
                out info.Direction2), "ContdIdentifyGetLastStrokeInfo");
            return info;
        }

        /// <summary>Stores the windows of all parts that record.</summary>
        public void ContdRecord(Vector3 headPosition, Quaternion headRotation)
        {
            Check(TryContdRecord(headPosition, headRotation), "ContdRecord");
        }

        public int TryContdRecord(Vector3 headPosition, Quaternion headRotation)
        {
            return Native.GestureCombinations_contdRecord(Handle, ref headPosition, ref headRotation);
        }

        public int TryContdRecord(double[] headMatrix)
        {
            return Native.GestureCombinations_contdRecordM(Handle, CheckMatrix(headMatrix));
        }

        public void ContdRecordPart(int part, Vector3 headPosition, Quaternion headRotation)
        {
            Check(TryContdRecordPart(part, headPosition, headRotation), "ContdRecordPart");
        }

        public int TryContdRecordPart(int part, Vector3 headPosition, Quaternion headRotation)
        {
            return Native.GestureCombinations_contdRecordPart(Handle, part, ref headPosition, ref headRotation);
        }

        public int TryContdRecordPart(int part, double[] headMatrix)
        {
            return Native.GestureCombinations_contdRecordPartM(Handle, part, CheckMatrix(headMatrix));
        }

        public int GetContdIdentificationPeriod(int part)
        {
            return Check(Native.GestureCombinations_getContdIdentificationPeriod(Handle, part), "GetContdIdentificationPeriod");
        }

        public void SetContdIdentificationPeriod(int part, int ms)
        {
            Check(Native.GestureCombinations_setContdIdentificationPeriod(Handle, part, ms), "SetContdIdentificationPeriod");
        }

        public int GetContdIdentificationSmoothing(int part)
        {
            return Check(Native.GestureCombinations_getContdIdentificationSmoothing(Handle, part), "GetContdIdentificationSmoothing");
        }

        public void SetContdIdentificationSmoothing(int part, int samples)
        {
            Check(Native.GestureCombinations_setContdIdentificationSmoothing(Handle, part, samples), "SetContdIdentificationSmoothing");
        }

        // ---- Continuous detection of combinations (call every frame) ----

        /// <summary>
        /// A combination has been performed: the combination's index and the confidence, from 0 to
        /// 1. Raised by ContdDetect and TryContdDetect on the one frame that detects it, on the
        /// thread that made the call and before the call returns; an exception the handler throws
        /// reaches that caller.
        /// </summary>
        public event Action<int, double> GestureDetected;

        /// <summary>The host's frame time in seconds for every part: see GestureRecognition.SetHostTime.</summary>
        public void SetHostTime(double seconds)
        {
            Check(Native.GestureCombinations_setHostTime(Handle, seconds), "SetHostTime");
        }

        /// <summary>
        /// Call once a frame, after every part's hand pose went into strokes started with gesture -1.
        /// True on the frame on which a combination has been performed (the gesture of each of its
        /// parts performed together, and none by the parts it marks -1), with its index and a
        /// confidence from 0 to 1 (and GestureDetected raised); false on every other frame, with -1
        /// and 0.
        /// </summary>
        public bool ContdDetect(Vector3 headPosition, Quaternion headRotation, out int combination, out double confidence)
        {
            return Check(TryContdDetect(headPosition, headRotation, out combination, out confidence), "ContdDetect") == 1;
        }

        /// <summary>
        /// The same, returning the library's int: 1 detected, 0 not, or a negative code (for example
        /// NoStrokeStarted when a part has no stroke, or NoGestures without combinations). Allocates nothing.
        /// </summary>
        public int TryContdDetect(Vector3 headPosition, Quaternion headRotation, out int combination, out double confidence)
        {
            int code = Native.GestureCombinations_contdDetect(Handle, ref headPosition, ref headRotation, out combination,
                                                              out confidence);
            return Detected(code, ref combination, ref confidence);
        }

        public bool ContdDetect(double[] headMatrix, out int combination, out double confidence)
        {
            return Check(TryContdDetect(headMatrix, out combination, out confidence), "ContdDetect") == 1;
        }

        public int TryContdDetect(double[] headMatrix, out int combination, out double confidence)
        {
            int code = Native.GestureCombinations_contdDetectM(Handle, CheckMatrix(headMatrix), out combination, out confidence);
            return Detected(code, ref combination, ref confidence);
        }

        /// <summary>The detection sensitivity of every part, 0 to 1: see GestureRecognition.DetectionSensitivity.</summary>
        public double DetectionSensitivity
        {
            get { return Native.GestureCombinations_getDetectionSensitivity(Handle); }
            set { Check(Native.GestureCombinations_setDetectionSensitivity(Handle, value), "DetectionSensitivity"); }
        }

        private int Detected(int code, ref int combination, ref double confidence)
        {
            if (code != 1)
            {
                combination = -1;
                confidence = 0;
                return code;
            }
            Action<int, double> handler = GestureDetected;
            if (handler != null) handler(combination, confidence);
            return code;
        }

        // ---- Gestures of the parts ----

        public int NumberOfGestures(int part)
        {
            return Check(Native.GestureCombinations_numberOfGestures(Handle, part), "NumberOfGestures");
        }

        public int CreateGesture(int part, string name, byte[] metadata = null)
        {
            int index = -1;
            StoreMetadata(metadata, m => index = Native.GestureCombinations_createGesture(Handle, part, Utf8(name), m),
                          "CreateGesture");
            return index;
        }

        /// <summary>Combinations follow: the deleted gesture becomes -1, later ones move down.</summary>
        public void DeleteGesture(int part, int index)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_deleteGesture(Handle, part, index), "DeleteGesture");
        }

        public void DeleteAllGestures(int part)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_deleteAllGestures(Handle, part), "DeleteAllGestures");
        }

        /// <summary>
        /// Replays one gesture's samples into another part (toGesture -1 creates a gesture there),
        /// mirrored about an axis or not; returns the target gesture.
        /// </summary>
        public int CopyGesture(int fromPart, int fromGesture, int toPart, int toGesture = -1, MirrorAxis mirror = MirrorAxis.None)
        {
            int result = Check(Native.GestureCombinations_copyGesture(Handle, fromPart, fromGesture, toPart, toGesture, (int)mirror),
                               "CopyGesture");
            ClaimMetadata();
            return result;
        }

        /// <summary>The part's score of its last training.</summary>
        public double GestureRecognitionScore(int part)
        {
            return CheckScore(Native.GestureCombinations_gestureRecognitionScore(Handle, part), "GestureRecognitionScore");
        }

        public string GetGestureName(int part, int index)
        {
            return ReadName(Native.GestureCombinations_getGestureNameLength(Handle, part, index),
                            buffer => Native.GestureCombinations_copyGestureName(Handle, part, index, buffer, buffer.Length),
                            "GetGestureName");
        }

        public void SetGestureName(int part, int index, string name)
        {
            Check(Native.GestureCombinations_setGestureName(Handle, part, index, Utf8(name)), "SetGestureName");
        }

        public byte[] GetGestureMetadata(int part, int index)
        {
            return ReadMetadata(Native.GestureCombinations_getGestureMetadata(Handle, part, index));
        }

        public void SetGestureMetadata(int part, int index, byte[] metadata)
        {
            ClaimMetadata();
            StoreMetadata(metadata, m => Native.GestureCombinations_setGestureMetadata(Handle, part, index, m), "SetGestureMetadata");
        }

        public bool GetGestureEnabled(int part, int index)
        {
            return Native.GestureCombinations_getGestureEnabled(Handle, part, index) != 0;
        }

        public void SetGestureEnabled(int part, int index, bool enabled)
        {
            Check(Native.GestureCombinations_setGestureEnabled(Handle, part, index, enabled ? 1 : 0), "SetGestureEnabled");
        }

        public int GetGestureNumberOfSamples(int part, int index)
        {
            return Check(Native.GestureCombinations_getGestureNumberOfSamples(Handle, part, index), "GetGestureNumberOfSamples");
        }

        public SampleType GetGestureSampleType(int part, int gesture, int sample)
        {
            return (SampleType)Check(Native.GestureCombinations_getGestureSampleType(Handle, part, gesture, sample),
                                     "GetGestureSampleType");
        }

        public void SetGestureSampleType(int part, int gesture, int sample, SampleType type)
        {
            Check(Native.GestureCombinations_setGestureSampleType(Handle, part, gesture, sample, (int)type), "SetGestureSampleType");
        }

        public int GetGestureSampleLength(int part, int gesture, int sample, bool processed = false)
        {
            return Check(Native.GestureCombinations_getGestureSampleLength(Handle, part, gesture, sample, processed ? 1 : 0),
                         "GetGestureSampleLength");
        }

        public Stroke GetGestureSampleStroke(int part, int gesture, int sample, bool processed = false)
        {
            int flag = processed ? 1 : 0;
            return ReadStroke(Native.GestureCombinations_getGestureSampleLength(Handle, part, gesture, sample, flag),
                              s => Native.GestureCombinations_getGestureSampleStroke(
                                  Handle, part, gesture, sample, flag, s.HandPositions.Length, s.HandPositions,
                                  s.HandRotations, s.HeadPositions, s.HeadRotations), "GetGestureSampleStroke");
        }

        public int GetGestureMeanLength(int part, int gesture)
        {
            return Check(Native.GestureCombinations_getGestureMeanLength(Handle, part, gesture), "GetGestureMeanLength");
        }

        public MeanStroke GetGestureMeanStroke(int part, int gesture)
        {
            return ReadMeanStroke(Native.GestureCombinations_getGestureMeanLength(Handle, part, gesture),
                                  m => Native.GestureCombinations_getGestureMeanStroke(
                                      Handle, part, gesture, m.Positions, m.Rotations, m.Positions.Length, out m.Position,
                                      out m.Rotation, out m.Scale), "GetGestureMeanStroke");
        }

        public void DeleteGestureSample(int part, int gesture, int sample)
        {
            Check(Native.GestureCombinations_deleteGestureSample(Handle, part, gesture, sample), "DeleteGestureSample");
        }

        public void DeleteAllGestureSamples(int part, int gesture)
        {
            Check(Native.GestureCombinations_deleteAllGestureSamples(Handle, part, gesture), "DeleteAllGestureSamples");
        }

        // ---- Files: one archive with the combinations and every part ----

        public void SaveToFile(string path) { Check(Native.GestureCombinations_saveToFile(Handle, Utf8(path)), "SaveToFile"); }

        /// <summary>Replaces all parts and combinations by those of the file.</summary>
        public void LoadFromFile(string path)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_loadFromFile(Handle, Utf8(path), DefaultMetadataCreator), "LoadFromFile");
        }

        public void LoadFromBuffer(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            ClaimMetadata();
            Check(Native.GestureCombinations_loadFromBuffer(Handle, file, file.Length, DefaultMetadataCreator), "LoadFromBuffer");
        }

        /// <summary>Merges a file with as many parts: gestures join by name, equal combinations by content.</summary>
        public void ImportFromFile(string path)
        {
            Check(Native.GestureCombinations_importFromFile(Handle, Utf8(path), DefaultMetadataCreator), "ImportFromFile");
        }

        public void ImportFromBuffer(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            Check(Native.GestureCombinations_importFromBuffer(Handle, file, file.Length, DefaultMetadataCreator), "ImportFromBuffer");
        }

        /// <summary>One part as a gesture database file, as GestureRecognition saves it.</summary>
        public void SaveGestureToFile(int part, string path)
        {
            Check(Native.GestureCombinations_saveGestureToFile(Handle, part, Utf8(path)), "SaveGestureToFile");
        }

        public void LoadGestureFromFile(int part, string path)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_loadGestureFromFile(Handle, part, Utf8(path), DefaultMetadataCreator),
                  "LoadGestureFromFile");
        }

        public void LoadGestureFromBuffer(int part, byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            ClaimMetadata();
            Check(Native.GestureCombinations_loadGestureFromBuffer(Handle, part, file, file.Length, DefaultMetadataCreator),
                  "LoadGestureFromBuffer");
        }

        public void SaveToFileAsync(string path)
        {
            Check(Native.GestureCombinations_saveToFileAsync(Handle, Utf8(path)), "SaveToFileAsync");
        }

        public bool IsSaving { get { return Native.GestureCombinations_isSaving(Handle) != 0; } }

        public void CancelSaving() { Check(Native.GestureCombinations_cancelSaving(Handle), "CancelSaving"); }

        public void LoadFromFileAsync(string path)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_loadFromFileAsync(Handle, Utf8(path), DefaultMetadataCreator), "LoadFromFileAsync");
        }

        public void LoadFromBufferAsync(byte[] file)
        {
            if (file == null) throw new ArgumentNullException("file");
            ClaimMetadata();
            Check(Native.GestureCombinations_loadFromBufferAsync(Handle, file, file.Length, DefaultMetadataCreator),
                  "LoadFromBufferAsync");
        }

        public override bool IsLoading { get { return Native.GestureCombinations_isLoading(Handle) != 0; } }

        public void CancelLoading() { Check(Native.GestureCombinations_cancelLoading(Handle), "CancelLoading"); }

        // ---- Combination records ----

        public int NumberOfGestureCombinations
        {
            get { return Check(Native.GestureCombinations_numberOfGestureCombinations(Handle), "NumberOfGestureCombinations"); }
        }

        /// <summary>A new combination in which every part must stay idle; returns its index.</summary>
        public int CreateGestureCombination(string name)
        {
            return Check(Native.GestureCombinations_createGestureCombination(Handle, Utf8(name)), "CreateGestureCombination");
        }

        public void DeleteGestureCombination(int combination)
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_deleteGestureCombination(Handle, combination), "DeleteGestureCombination");
        }

        public void DeleteAllGestureCombinations()
        {
            ClaimMetadata();
            Check(Native.GestureCombinations_deleteAllGestureCombinations(Handle), "DeleteAllGestureCombinations");
        }

        /// <summary>The part's gesture in the combination; -1: the part must do nothing.</summary>
        public void SetCombinationPartGesture(int combination, int part, int gesture)
        {
            Check(Native.GestureCombinations_setCombinationPartGesture(Handle, combination, part, gesture),
                  "SetCombinationPartGesture");
        }

        public int GetCombinationPartGesture(int combination, int part)
        {
            int gesture = Native.GestureCombinations_getCombinationPartGesture(Handle, combination, part);
            return gesture < -1 ? Check(gesture, "GetCombinationPartGesture") : gesture;
        }

        public string GetGestureCombinationName(int combination)
        {
            return ReadName(Native.GestureCombinations_getGestureCombinationNameLength(Handle, combination),
                            buffer => Native.GestureCombinations_copyGestureCombinationName(Handle, combination, buffer, buffer.Length),
                            "GetGestureCombinationName");
        }

        public void SetGestureCombinationName(int combination, string name)
        {
            Check(Native.GestureCombinations_setGestureCombinationName(Handle, combination, Utf8(name)),
                  "SetGestureCombinationName");
        }

        public byte[] GetGestureCombinationMetadata(int combination)
        {
            return ReadMetadata(Native.GestureCombinations_getGestureCombinationMetadata(Handle, combination));
        }

        public void SetGestureCombinationMetadata(int combination, byte[] metadata)
        {
            ClaimMetadata();
            StoreMetadata(metadata, m => Native.GestureCombinations_setGestureCombinationMetadata(Handle, combination, m),
                          "SetGestureCombinationMetadata");
        }

        // ---- Training of all parts ----

        /// <summary>Trains every enabled part on worker threads; TrainingUpdated and TrainingFinished report.</summary>
        public void StartTraining() { Check(Native.GestureCombinations_startTraining(Handle), "StartTraining"); }

        public bool IsTraining { get { return Native.GestureCombinations_isTraining(Handle) != 0; } }

        public void StopTraining() { Check(Native.GestureCombinations_stopTraining(Handle), "StopTraining"); }

        /// <summary>The share of combinations recognised when the samples are replayed (throws while training).</summary>
        public double RecognitionScore
        {
            get { return CheckScore(Native.GestureCombinations_recognitionScore(Handle), "RecognitionScore"); }
        }

        /// <summary>Training time limit in seconds, handed to every part.</summary>
        public int MaxTrainingTime
        {
            get { return Native.GestureCombinations_getMaxTrainingTime(Handle); }
            set { Native.GestureCombinations_setMaxTrainingTime(Handle, value); }
        }

        /// <summary>How many parts compute at once while training; 0 or below: no limit.</summary>
        public void SetMaxTrainingThreads(int threads) { Native.GestureCombinations_setMaxTrainingThreads(Handle, threads); }

        public int GetTrainingParameter(int id)
        {
            int value = Native.GestureCombinations_getTrainingParameter(Handle, id);
            return value == (int)ReturnCode.InvalidParameter ? Check(value, "GetTrainingParameter") : value;
        }

        public void SetTrainingParameter(int id, int value)
        {
            Check(Native.GestureCombinations_setTrainingParameter(Handle, id, value), "SetTrainingParameter");
        }

        // ---- Settings ----

        public UpdateHeadPositionPolicy GetUpdateHeadPositionPolicy(int part)
        {
            return (UpdateHeadPositionPolicy)Check(Native.GestureCombinations_getUpdateHeadPositionPolicy(Handle, part),
                                                   "GetUpdateHeadPositionPolicy");
        }

        public void SetUpdateHeadPositionPolicy(int part, UpdateHeadPositionPolicy policy)
        {
            Check(Native.GestureCombinations_setUpdateHeadPositionPolicy(Handle, part, (int)policy), "SetUpdateHeadPositionPolicy");
        }

        /// <summary>Copied into a part whenever it starts a stroke.</summary>
        public bool IgnoreHeadRotationX
        {
            get { return Native.GestureCombinations_getIgnoreHeadRotationX(Handle) != 0; }
            set { Native.GestureCombinations_setIgnoreHeadRotationX(Handle, value ? 1 : 0); }
        }

        public bool IgnoreHeadRotationY
        {
            get { return Native.GestureCombinations_getIgnoreHeadRotationY(Handle) != 0; }
            set { Native.GestureCombinations_setIgnoreHeadRotationY(Handle, value ? 1 : 0); }
        }

        public bool IgnoreHeadRotationZ
        {
            get { return Native.GestureCombinations_getIgnoreHeadRotationZ(Handle) != 0; }
            set { Native.GestureCombinations_setIgnoreHeadRotationZ(Handle, value ? 1 : 0); }
        }

        public int RotationalFrameOfReferenceX
        {
            get { return Native.GestureCombinations_getRotationalFrameOfReferenceX(Handle); }
            set { Native.GestureCombinations_setRotationalFrameOfReferenceX(Handle, value); }
        }

        public int RotationalFrameOfReferenceY
        {
            get { return Native.GestureCombinations_getRotationalFrameOfReferenceY(Handle); }
            set { Native.GestureCombinations_setRotationalFrameOfReferenceY(Handle, value); }
        }

        public int RotationalFrameOfReferenceZ
        {
            get { return Native.GestureCombinations_getRotationalFrameOfReferenceZ(Handle); }
            set { Native.GestureCombinations_setRotationalFrameOfReferenceZ(Handle, value); }
        }

        public RotationOrder RotationalFrameOfReferenceRotationOrder
        {
            get { return (RotationOrder)Native.GestureCombinations_getRotationalFrameOfReferenceRotationOrder(Handle); }
            set { Native.GestureCombinations_setRotationalFrameOfReferenceRotationOrder(Handle, (int)value); }
        }

        public byte[] Metadata
        {
            get { return ReadMetadata(Native.GestureCombinations_getMetadata(Handle)); }
            set
            {
                ReplaceSetMetadata(value, Native.GestureCombinations_getMetadata(Handle),
                                   m => Native.GestureCombinations_setMetadata(Handle, m));
            }
        }

        /// <summary>The enhanced recognition mode of every part, saved in the file.</summary>
        public bool EnhancedRecognition
        {
            get { return Native.GestureCombinations_getEnhancedRecognition(Handle) != 0; }
            set { Check(Native.GestureCombinations_setEnhancedRecognition(Handle, value ? 1 : 0), "EnhancedRecognition"); }
        }

        // ---- Release ----

        private void CheckPartRoom(double[] partProbabilities, double[] partSimilarities)
        {
            if (partProbabilities == null && partSimilarities == null) return;
            int parts = NumberOfParts;
            if (partProbabilities != null && partProbabilities.Length < parts)
                throw new ArgumentException("room for one value per part is needed", "partProbabilities");
            if (partSimilarities != null && partSimilarities.Length < parts)
                throw new ArgumentException("room for one value per part is needed", "partSimilarities");
        }

        internal override void CancelLoadingBeforeRelease(IntPtr h) { Native.GestureCombinations_cancelLoading(h); }
        internal override IntPtr GetSetMetadataPointer(IntPtr h) { return Native.GestureCombinations_getMetadata(h); }
        internal override void DeleteNative(IntPtr h) { Native.GestureCombinations_delete(h); }

        internal override void ClaimAllMetadata()
        {
            IntPtr h = Handle;
            int parts = Native.GestureCombinations_numberOfParts(h);
            for (int part = 0; part < parts; ++part)
            {
                int count = Native.GestureCombinations_numberOfGestures(h, part);
                for (int i = 0; i < count; ++i) Claim(Native.GestureCombinations_getGestureMetadata(h, part, i));
            }
            int combinations = Native.GestureCombinations_numberOfGestureCombinations(h);
            for (int c = 0; c < combinations; ++c) Claim(Native.GestureCombinations_getGestureCombinationMetadata(h, c));
        }
    }

    /// <summary>
    /// The flat C functions, one declaration each, named as in the C header: for code that needs
    /// what the classes above do not offer. Handles are the classes' Handle values.
    /// </summary>
    public static class Native
    {
        private const string Library = "zando";
        private const CallingConvention Cdecl = CallingConvention.Cdecl;

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void TrainingCallback(double score, IntPtr metadata);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void IOCallback(int value, IntPtr metadata);

        [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
        public delegate void DebugCallback(IntPtr message, IntPtr metadata);

        // ---- One recogniser ----

        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_create();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_delete(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getVersionString();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getVersionStringLength();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_copyVersionString([Out] byte[] dst, int dstSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setDebugCallbackFunction(DebugCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setDebugCallbackMetadata(IntPtr metadata);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_startStroke(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, int recordAsSample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_startStrokeM(IntPtr gro, double[] headMatrix, int recordAsSample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setUpdateHeadPositionPolicy(IntPtr gro, int policy);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getUpdateHeadPositionPolicy(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_updateHeadPositionM(IntPtr gro, double[] headMatrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_updateHeadPositionQ(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdStroke(IntPtr gro, ref Vector3 position);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdStrokeQ(IntPtr gro, ref Vector3 position, ref Quaternion rotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdStrokeE(IntPtr gro, ref Vector3 position, ref Vector3 euler);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdStrokeM(IntPtr gro, double[] matrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_endStroke(IntPtr gro, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_endStrokeAndGetAllProbabilities(IntPtr gro, [Out] double[] p, ref int n, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_endStrokeAndGetSimilarity(IntPtr gro, out double similarity, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(IntPtr gro, [Out] double[] p, [Out] double[] s, ref int n, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_isStrokeStarted(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_pruneStroke(IntPtr gro, int maxPoints, int maxAgeMs);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_cancelStroke(IntPtr gro);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentify(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, out double similarity);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentifyM(IntPtr gro, double[] headMatrix, out double similarity);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, [Out] double[] p, [Out] double[] s, ref int n);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(IntPtr gro, double[] headMatrix, [Out] double[] p, [Out] double[] s, ref int n);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentifyAndGetStroke(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, out double similarity, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, [Out] double[] p, [Out] double[] s, ref int n, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdRecord(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdRecordM(IntPtr gro, double[] headMatrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getContdIdentificationPeriod(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setContdIdentificationPeriod(IntPtr gro, int ms);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getContdIdentificationSmoothing(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setContdIdentificationSmoothing(IntPtr gro, int samples);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_numberOfGestures(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_deleteGesture(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_deleteAllGestures(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_createGesture(IntPtr gro, byte[] name, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern double GestureRecognition_recognitionScore(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getGestureName(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureNameLength(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_copyGestureName(IntPtr gro, int index, [Out] byte[] buffer, int bufferSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getGestureMetadata(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureEnabled(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureNumberOfSamples(IntPtr gro, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureSampleType(IntPtr gro, int gesture, int sample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setGestureSampleType(IntPtr gro, int gesture, int sample, int type);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureSampleLength(IntPtr gro, int gesture, int sample, int processed);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureSampleStroke(IntPtr gro, int gesture, int sample, int processed, int bufferSize, [Out] Vector3[] handPositions, [Out] Quaternion[] handRotations, [Out] Vector3[] headPositions, [Out] Quaternion[] headRotations);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureMeanLength(IntPtr gro, int gesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getGestureMeanStroke(IntPtr gro, int gesture, [Out] Vector3[] positions, [Out] Quaternion[] rotations, int bufferSize, out Vector3 strokePosition, out Quaternion strokeRotation, out double scale);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_deleteGestureSample(IntPtr gro, int gesture, int sample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_deleteAllGestureSamples(IntPtr gro, int gesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setGestureName(IntPtr gro, int index, byte[] name);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setGestureMetadata(IntPtr gro, int index, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setGestureEnabled(IntPtr gro, int index, int enabled);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_saveToFile(IntPtr gro, byte[] path);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_loadFromFile(IntPtr gro, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_loadFromBuffer(IntPtr gro, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_importFromFile(IntPtr gro, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_importFromBuffer(IntPtr gro, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_saveToFileAsync(IntPtr gro, byte[] path);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setSavingUpdateCallbackFunction(IntPtr gro, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setSavingUpdateCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setSavingFinishCallbackFunction(IntPtr gro, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setSavingFinishCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_isSaving(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_cancelSaving(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_loadFromFileAsync(IntPtr gro, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_loadFromBufferAsync(IntPtr gro, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setLoadingUpdateCallbackFunction(IntPtr gro, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setLoadingUpdateCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setLoadingFinishCallbackFunction(IntPtr gro, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setLoadingFinishCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_isLoading(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_cancelLoading(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_importGestureSamples(IntPtr gro, IntPtr fromGro, int fromGesture, int intoGesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_importGestures(IntPtr gro, IntPtr fromGro);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_startTraining(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_isTraining(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_stopTraining(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getTrainingParameter(IntPtr gro, int id);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setTrainingParameter(IntPtr gro, int id, int value);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getMaxTrainingTime(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setMaxTrainingTime(IntPtr gro, int seconds);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setTrainingUpdateCallback(IntPtr gro, TrainingCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setTrainingFinishCallback(IntPtr gro, TrainingCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setTrainingUpdateCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setTrainingFinishCallbackMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getTrainingUpdateCallbackMetadata(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getTrainingFinishCallbackMetadata(IntPtr gro);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getIgnoreHeadRotationX(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setIgnoreHeadRotationX(IntPtr gro, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getIgnoreHeadRotationY(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setIgnoreHeadRotationY(IntPtr gro, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getIgnoreHeadRotationZ(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setIgnoreHeadRotationZ(IntPtr gro, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getRotationalFrameOfReferenceX(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setRotationalFrameOfReferenceX(IntPtr gro, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getRotationalFrameOfReferenceY(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setRotationalFrameOfReferenceY(IntPtr gro, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getRotationalFrameOfReferenceZ(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setRotationalFrameOfReferenceZ(IntPtr gro, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getRotationalFrameOfReferenceRotationOrder(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_setRotationalFrameOfReferenceRotationOrder(IntPtr gro, int i);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setMetadata(IntPtr gro, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getMetadata(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setEnhancedRecognition(IntPtr gro, int on);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getEnhancedRecognition(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setHostTime(IntPtr gro, double seconds);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdDetect(IntPtr gro, ref Vector3 headPosition, ref Quaternion headRotation, out int gesture, out double confidence);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_contdDetectM(IntPtr gro, double[] headMatrix, out int gesture, out double confidence);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setDetectionSensitivity(IntPtr gro, double sensitivity);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern double GestureRecognition_getDetectionSensitivity(IntPtr gro);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_createDefaultMetadata();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_defaultMetadataCreatorFunction();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureRecognition_getDefaultMetadataCreatorFunction();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureRecognition_deleteDefaultMetadata(IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getDefaultMetadataData(IntPtr metadata, [Out] byte[] buffer, int bufferSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_getDefaultMetadataSize(IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureRecognition_setDefaultMetadataData(IntPtr metadata, byte[] data, int size);

        // ---- Combinations ----

        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_create(int numberOfParts);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_delete(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getVersionString();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getVersionStringLength();
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_copyVersionString([Out] byte[] dst, int dstSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_numberOfParts(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getPartEnabled(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setPartEnabled(IntPtr gco, int part, int enabled);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_startStroke(IntPtr gco, int part, ref Vector3 headPosition, ref Quaternion headRotation, int recordAsSample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_startStrokeM(IntPtr gco, int part, double[] headMatrix, int recordAsSample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_updateHeadPositionM(IntPtr gco, double[] headMatrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_updateHeadPositionQ(IntPtr gco, ref Vector3 headPosition, ref Quaternion headRotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdStroke(IntPtr gco, int part, ref Vector3 position);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdStrokeQ(IntPtr gco, int part, ref Vector3 position, ref Quaternion rotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdStrokeE(IntPtr gco, int part, ref Vector3 position, ref Vector3 euler);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdStrokeM(IntPtr gco, int part, double[] matrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_endStroke(IntPtr gco, int part, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getPartProbabilitiesAndSimilarities(IntPtr gco, int part, [Out] double[] p, [Out] double[] s, ref int n);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_isStrokeStarted(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_pruneStroke(IntPtr gco, int part, int maxPoints, int maxAgeMs);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_cancelStroke(IntPtr gco, int part);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_identifyGestureCombination(IntPtr gco, out double probability, out double similarity, [Out] double[] partProbabilities, [Out] double[] partSimilarities);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdIdentify(IntPtr gco, ref Vector3 headPosition, ref Quaternion headRotation, out double similarity, [Out] double[] partProbabilities, [Out] double[] partSimilarities);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdIdentifyM(IntPtr gco, double[] headMatrix, out double similarity, [Out] double[] partProbabilities, [Out] double[] partSimilarities);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdIdentifyGetLastStrokeInfo(IntPtr gco, int part, out Vector3 pos, out double scale, out Vector3 dir0, out Vector3 dir1, out Vector3 dir2);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdRecord(IntPtr gco, ref Vector3 headPosition, ref Quaternion headRotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdRecordM(IntPtr gco, double[] headMatrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdRecordPart(IntPtr gco, int part, ref Vector3 headPosition, ref Quaternion headRotation);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdRecordPartM(IntPtr gco, int part, double[] headMatrix);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getContdIdentificationPeriod(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setContdIdentificationPeriod(IntPtr gco, int part, int ms);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getContdIdentificationSmoothing(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setContdIdentificationSmoothing(IntPtr gco, int part, int samples);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_numberOfGestures(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteGesture(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteAllGestures(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_createGesture(IntPtr gco, int part, byte[] name, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_copyGesture(IntPtr gco, int fromPart, int fromGesture, int toPart, int toGesture, int mirrorAxis);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern double GestureCombinations_gestureRecognitionScore(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getGestureName(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureNameLength(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_copyGestureName(IntPtr gco, int part, int index, [Out] byte[] buffer, int bufferSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getGestureMetadata(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureEnabled(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureNumberOfSamples(IntPtr gco, int part, int index);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureSampleType(IntPtr gco, int part, int gesture, int sample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureSampleType(IntPtr gco, int part, int gesture, int sample, int type);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureSampleLength(IntPtr gco, int part, int gesture, int sample, int processed);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureSampleStroke(IntPtr gco, int part, int gesture, int sample, int processed, int bufferSize, [Out] Vector3[] handPositions, [Out] Quaternion[] handRotations, [Out] Vector3[] headPositions, [Out] Quaternion[] headRotations);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureMeanLength(IntPtr gco, int part, int gesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureMeanStroke(IntPtr gco, int part, int gesture, [Out] Vector3[] positions, [Out] Quaternion[] rotations, int bufferSize, out Vector3 strokePosition, out Quaternion strokeRotation, out double scale);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteGestureSample(IntPtr gco, int part, int gesture, int sample);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteAllGestureSamples(IntPtr gco, int part, int gesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureName(IntPtr gco, int part, int index, byte[] name);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureMetadata(IntPtr gco, int part, int index, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureEnabled(IntPtr gco, int part, int index, int enabled);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_saveToFile(IntPtr gco, byte[] path);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadFromFile(IntPtr gco, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadFromBuffer(IntPtr gco, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_importFromFile(IntPtr gco, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_importFromBuffer(IntPtr gco, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_saveGestureToFile(IntPtr gco, int part, byte[] path);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadGestureFromFile(IntPtr gco, int part, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadGestureFromBuffer(IntPtr gco, int part, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_saveToFileAsync(IntPtr gco, byte[] path);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setSavingUpdateCallbackFunction(IntPtr gco, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setSavingUpdateCallbackMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setSavingFinishCallbackFunction(IntPtr gco, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setSavingFinishCallbackMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_isSaving(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_cancelSaving(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadFromFileAsync(IntPtr gco, byte[] path, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_loadFromBufferAsync(IntPtr gco, byte[] buffer, int size, IntPtr createMetadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setLoadingUpdateCallbackFunction(IntPtr gco, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setLoadingUpdateCallbackMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setLoadingFinishCallbackFunction(IntPtr gco, IOCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setLoadingFinishCallbackMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_isLoading(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_cancelLoading(IntPtr gco);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_numberOfGestureCombinations(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteGestureCombination(IntPtr gco, int combination);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_deleteAllGestureCombinations(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_createGestureCombination(IntPtr gco, byte[] name);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setCombinationPartGesture(IntPtr gco, int combination, int part, int gesture);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getCombinationPartGesture(IntPtr gco, int combination, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getGestureCombinationName(IntPtr gco, int combination);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getGestureCombinationNameLength(IntPtr gco, int combination);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_copyGestureCombinationName(IntPtr gco, int combination, [Out] byte[] buffer, int bufferSize);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureCombinationName(IntPtr gco, int combination, byte[] name);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getGestureCombinationMetadata(IntPtr gco, int combination);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setGestureCombinationMetadata(IntPtr gco, int combination, IntPtr metadata);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getTrainingParameter(IntPtr gco, int id);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setTrainingParameter(IntPtr gco, int id, int value);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_startTraining(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_isTraining(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_stopTraining(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern double GestureCombinations_recognitionScore(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getMaxTrainingTime(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setMaxTrainingTime(IntPtr gco, int seconds);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getMaxTrainingThreads(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setMaxTrainingThreads(IntPtr gco, int threads);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setTrainingUpdateCallback(IntPtr gco, TrainingCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setTrainingFinishCallback(IntPtr gco, TrainingCallback callback);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setTrainingUpdateCallbackMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setTrainingFinishCallbackMetadata(IntPtr gco, IntPtr metadata);

        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setUpdateHeadPositionPolicy(IntPtr gco, int part, int policy);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getUpdateHeadPositionPolicy(IntPtr gco, int part);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getIgnoreHeadRotationX(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setIgnoreHeadRotationX(IntPtr gco, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getIgnoreHeadRotationY(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setIgnoreHeadRotationY(IntPtr gco, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getIgnoreHeadRotationZ(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setIgnoreHeadRotationZ(IntPtr gco, int onOff);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getRotationalFrameOfReferenceX(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setRotationalFrameOfReferenceX(IntPtr gco, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getRotationalFrameOfReferenceY(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setRotationalFrameOfReferenceY(IntPtr gco, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getRotationalFrameOfReferenceZ(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setRotationalFrameOfReferenceZ(IntPtr gco, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getRotationalFrameOfReferenceRotationOrder(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern void GestureCombinations_setRotationalFrameOfReferenceRotationOrder(IntPtr gco, int i);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setMetadata(IntPtr gco, IntPtr metadata);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern IntPtr GestureCombinations_getMetadata(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setEnhancedRecognition(IntPtr gco, int on);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_getEnhancedRecognition(IntPtr gco);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setHostTime(IntPtr gco, double seconds);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdDetect(IntPtr gco, ref Vector3 headPosition, ref Quaternion headRotation, out int combination, out double confidence);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_contdDetectM(IntPtr gco, double[] headMatrix, out int combination, out double confidence);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern int GestureCombinations_setDetectionSensitivity(IntPtr gco, double sensitivity);
        [DllImport(Library, CallingConvention = Cdecl)] public static extern double GestureCombinations_getDetectionSensitivity(IntPtr gco);
    }
}

// What nodes do, over registers in memory: each section a description in shorthand and what is then done with
// it.
#include "NodeScript.h"

namespace VX3::Test {

const char* const Scripts = R"(
== Access_ConditionsImposedModesAndInnerNodes
IntReg Implemented @0:4 ; IntReg Available @4:4 ; IntReg Locked @8:4 ; IntReg Reg @12:4
Integer Feature pIsImplemented=Implemented pIsAvailable=Available pIsLocked=Locked pValue=Reg
Integer Imposed ImposedAccessMode=RO pValue=Reg ; IntReg Opposed @16:4 ImposedAccessMode=WO AccessMode=RO
IntReg Blind @20:4 AccessMode=WO pIsLocked=Locked ; IntReg Odd @24:4 AccessMode=XY ; Integer Outer pValue=Feature
Float OverOpposed pValue=Opposed
--
Feature mode NI ; Outer mode NI ; Implemented = 2 ; Feature mode NA ; Available = 7 ; Outer mode RW ; Blind mode WO
Blind ?v !Access ; Locked = 1 ; Outer mode RO ; Blind mode NA ; Outer = 1 !Access~not writable (access mode RO)
Outer ?v 0 ; Imposed mode RO ; Opposed mode NA ; OverOpposed mode NA ; Odd mode RW ; Odd problem ~'XY' is unknown
Reg readonly ; Locked = 0 ; Outer mode RO ; Reg mode RO
== Access_ConditionsMayBeBooleansEnumerationsAndFormulas
IntReg Reg @0:4 ; IntReg Reg2 @4:4 ; Boolean Flag pValue=Reg OnValue=5 OffValue=9
Enumeration Choice :Off=0 :On=7 pValue=Reg2
IntSwissKnife Both pVariable.F=Flag pVariable.C=Choice Formula=(F=1)&&(C=7)
Integer ByFlag pIsAvailable=Flag Value=1 ; Integer ByChoice pIsAvailable=Choice Value=1
Integer ByBoth pIsImplemented=Both Value=1
--
Flag = 0 ; @0 ? 9 ; ByFlag mode NA ; ByChoice mode NA ; ByBoth mode NI ; Flag = 1 ; Choice <- On ; ByFlag mode RW
ByChoice mode RW ; ByBoth mode RW
== Access_ModesAreKeptWhereWhatTheyDependOnIs
IntReg Steady @0:4 ; IntReg Volatile @4:4 Cachable=NoCache ; Integer A pIsAvailable=Steady Value=1
Integer B pIsAvailable=Volatile Value=1 ; Enumeration E :X=0,pIsAvailable=Volatile Value=0
Integer C pIsAvailable=A pMax=Volatile Value=1 ; Port Second pIsAvailable=Volatile ; IntReg D @0:4 pPort=Second
--
A keepsmode 1 ; B keepsmode 0 ; C keepsmode 1 ; E keepsmode 1 ; D keepsmode 0 ; EnumEntry_E_X keepsmode 0
A mode NA ; B mode NA ; @0 = 1 ; @4 = 1 ; A mode NA ; B mode RW ; Steady invalidate ; A mode RW ; Steady invalidate
fail reads ; A mode NA ; fail none ; A mode RW
== Register_BitFieldsCountFromTheEndThatTheByteOrderSays
MaskedIntReg BigLow @0x100:4 LSB=31 MSB=28 ; MaskedIntReg BigSwapped @0x100:4 LSB=28 MSB=31
MaskedIntReg BigBit @0x100:4 Bit=0 ; MaskedIntReg OneEnd @0x100:4 MSB=28
MaskedIntReg LittleLow @0x100:4 LSB=0 MSB=3 Endianess=LittleEndian
MaskedIntReg LittleTwo @0x100:2 LSB=12 MSB=15 Endianess=LittleEndian
IntReg Default Address=0x100 Length=2 pPort=Device ; MaskedIntReg Signed @0x100:4 LSB=15 MSB=8 Sign=Signed
MaskedIntReg Top @0x100:8 LSB=63 MSB=0 ; MaskedIntReg Beyond @0x100:8 LSB=64 ; Port Swapped SwapEndianess=Yes
IntReg OnSwapped @0x100:2 pPort=Swapped
--
@0x100 = 81F2F3A5 ; BigLow ? 5 ; BigSwapped ? 5 ; BigBit ? 1 ; OneEnd ? 0 ; LittleLow ? 1 ; LittleTwo ? 0xF
Default ? 0xF281 ; Default mode RO ; Signed ? -14 ; Signed min -128 ; Signed max 127 ; BigLow min 0 ; BigLow max 15
BigLow inc 1 ; Top ? 0x81F2F3A500000000 ; Beyond problem ~LSB '64' is no bit ; OnSwapped mode NA
== Register_MaskedWriteKeepsTheOtherBitsAsTheDeviceHasThemNow
MaskedIntReg Low @0x100:4 LSB=31 MSB=24 ; MaskedIntReg High @0x100:4 LSB=7 MSB=0
MaskedIntReg Blind @0x104:4 LSB=31 MSB=24 AccessMode=WO
--
@0x100 = 11223344 ; Low ? 0x44 ; High ? 0x11 ; High = 0xAA ; High cached 1 ; Low cached 1 ; @0x100 = AA99FF44
Low = 0x55 ; @0x100 ? AA99FF55 ; Low := 0x100 !OutOfRange ; @0x100 ? AA99FF55 ; reads 4 ; @0x104 = FFFFFFFF
Blind = 1 ; @0x104 ? 1 ; Blind = 2 ; @0x104 ? 2 ; reads 0
== Register_OverlappingRegistersSeeEachOthersWrites
IntReg Whole @0x100:4 ; MaskedIntReg Field @0x100:4 LSB=31 MSB=24 ; IntReg Elsewhere @0x104:4
--
Whole ? 0 ; Field ? 0 ; Elsewhere ? 0 ; Whole = 0x0102 ; Field ? 2 ; Field = 5 ; Whole ? 0x0105 ; Elsewhere cached 1
== Register_LengthsThatAreOddOrComeFromNodes
IntReg S @64:8 Sign=Signed ; IntReg U @64:8 ; IntReg P @64:4 pLength=N ; Integer N Value=2
--
U max 0x7FFFFFFFFFFFFFFF ; U min 0 ; S min -9223372036854775808 ; U = -1 !OutOfRange ; @64 = 1020304 ; P ? 0x0102
N = 0 ; P ?? !OutOfRange ; N = 9 ; P ? !OutOfRange ; N = 8 ; P length 8
== Register_AddressIsTheSumOfAllItsPartsIn64Bits
Integer Base Value=0x1000 ; Integer Index Value=3 ; Integer Far Value=0xFFFFFFFFFFFFFFF0 ; Integer Stride Value=0x40
<IntReg Name="Sum"><Address>0x20</Address><Address>4</Address><IntSwissKnife Name="Part"><pVariable Name="I">Index</pVariable><Formula>I * 0x100</Formula></IntSwissKnife><pAddress>Base</pAddress><pIndex Offset="0x10">Index</pIndex><pIndex pOffset="Stride">Index</pIndex><pIndex>Index</pIndex><Length>4</Length><pPort>Device</pPort></IntReg>
IntReg Wraps pAddress=Far Address=0x30 Length=4 pPort=Device
Register High Address=0xFFFFF0F00000 Length=4 pPort=Device ; IntReg NoStride @0:4 pIndex+x=Index
--
Sum address 0x1420 ; Index = 0 ; Sum address 0x1024 ; Wraps address 0x20 ; High address 0xFFFFF0F00000
NoStride problem ~Offset 'x' is no number
== Register_IndexedRegisterIsReadAnewWhenTheIndexChanges
IntReg Selector @0:4 ; IntReg Gain @0x10:4 pIndex+4=Selector
--
@0x10 = 7 ; @0x18 = 9 ; Gain ? 7 ; Selector = 2 ; Gain ? 9 ; Gain = 10 ; @0x18 ? A ; @0x10 ? 7
== Register_StructEntriesShareTheWordAndInheritConditions
IntReg Lock @0:4
StructReg S @0x40:4 pIsLocked=Lock LSB=31 MSB=0 /Upper,LSB=15,MSB=0 /Flag,Bit=31,AccessMode=RO /All
--
@0x40 = 12340001 ; Upper ? 0x1234 ; Flag ? 1 ; All ? 0x12340001 ; Upper mode RW ; Flag mode RO ; Upper = 0xFFFF
@0x40 ? FFFF0001 ; Lock = 1 ; Upper mode RO
== Register_TextEndsAtTheFirstNulAndIsPaddedWithZeros
StringReg Text @0x80:8 ; StringReg Around @0x80:8 Cachable=WriteAround ; String Feature pValue=Text
String Constant Value=abc
--
@0x80 = 61620064 ; @0x84 = 65666768 ; Feature ? ab ; Text cached 1 ; reads 1 ; Feature ? ab ; Feature = xyz
@0x80 ? 78797A00 ; @0x84 ? 0 ; Feature ? xyz ; reads 0 ; Around = pq ; reads 0 ; Around ? pq ; reads 1
Feature = 12345678 ; Feature ?? 12345678 ; Feature = 123456789 !OutOfRange ; Feature maxlength 8
Feature text 12345678 ; Feature <- q ; Text ? q ; Constant ? abc ; Constant = d ; Constant ? d
Constant maxlength 0x7FFFFFFFFFFFFFFF ; Text ? q ; @0x80 = 61000000 ; Text ?? a ; Feature ? a
== Register_FloatingRegistersOfBothSizes
FloatReg Single @0x80:4 ; FloatReg Double @0x80:8 ; FloatReg Odd @0x80:3
--
Single = -1.5 ; @0x80 ? BFC00000 ; Single ?? -1.5 ; Single := 1e300 !OutOfRange ; Double = 1e300 ; Double ?? 1e300
Odd ? !OutOfRange ; Single max 3.4028234663852886e38 ; Single min -3.4028234663852886e38
Double max 1.7976931348623157e308
== Register_ConfigurationMemoryGivesKeysAndTexts
ConfRom Rom Address=0x400 Length=64 pPort=Device ; IntKey Vendor p1212Parser=Rom Key=3
IntKey Missing p1212Parser=Rom Key=0x77 ; IntKey NoKey p1212Parser=Rom Key=256
IntKey NoRom p1212Parser=Vendor Key=1 ; TextDesc Name p1212Parser=Rom Key=3
TextDesc NoText p1212Parser=Rom Key=0x0C
--
@0x400 = 01000000 ; @0x408 = 00030000 ; @0x40C = D1000003 ; @0x410 = 0C000001 ; @0x418 = 00020000
@0x41C = 03123456 ; @0x420 = 81000001 ; @0x424 = 00030000 ; @0x430 = 41636D65 ; Vendor ? 0x123456 ; Name ? Acme
Name maxlength 4 ; NoText ? !Runtime ; Missing ? !Runtime ; Vendor mode RO ; NoKey problem ~is no key
NoRom problem ~no configuration memory ; @0x400 = FFFFFFFF ; @0x408 = FFFFFFFF ; @0x40C = FFFFFFFF
@0x418 = FFFFFFFF ; Rom invalidate ; Missing ? !Runtime
== Numbers_IncrementGridStartsAtMinAndIsChecked
Integer A Value=5 Min=5 Max=50 Inc=4 ; Integer List Value=1 Max=6 ValidValueSet=1;2;4;8
Integer Wide Value=0 Min=-9223372036854775808 Inc=3 ; Float F Value=1 Min=0 Max=1000
Float Steps Value=1 Inc=0.5 ValidValueSet=1,2 ; Float Both pValue=A Inc=0.5
--
A = 9 ; A = 8 !OutOfRange ; A = 1 !OutOfRange ; A = 53 !OutOfRange ; A = 5 ; A = 49 ; A := 8 ; A ? 8 ; A incmode 1
A imposemax 20 ; A max 20 ; A = 21 !OutOfRange ; A imposemin 9 ; A min 9 ; A imposemin 1 ; A min 5 ; List incmode 2
List values 1,2,4 ; List allvalues 1,2,4,8 ; List = 4 ; List = 3 !OutOfRange ; List = 8 !OutOfRange
Wide = -9223372036854775799 ; Wide = 9223372036854775806 !OutOfRange ; Steps incmode 2 ; Steps inc 0.5
Both incmode 1 ; F = 1000.0000001 ; F = 1000.1 !OutOfRange ; F = 0 ; F = -1e-7 ; F = -1e-5 !OutOfRange
F = nan !OutOfRange ; F incmode 0 ; F inc !Runtime~has no increment ; F imposemax 2 ; F = 3 !OutOfRange
F imposemin 1 ; F min 1 ; Both min 5
== Numbers_MissingBoundsComeFromBelowAndDynamicOnesAreEvaluatedEachTime
IntReg Limit @0:4 Cachable=NoCache ; MaskedIntReg Reg @4:2 LSB=15 MSB=6 ; Integer Inner pValue=Reg Inc=2
Integer Outer pValue=Inner pMax=Limit ; Float AsFloat pValue=Inner ; Integer OverFloat pValue=Half
Float Half Value=2.5 Min=0.5 Max=9.5
--
Outer min 0 ; Inner max 1023 ; Outer inc 2 ; Outer max 0 ; Outer = 2 !OutOfRange ; @0 = 64 ; Outer max 100
Outer = 100 ; AsFloat max 1023 ; AsFloat inc 2 ; AsFloat = 51.6 ; Reg ? 52 ; AsFloat = nan !OutOfRange
AsFloat := 1e19 !OutOfRange ; OverFloat ? 3 ; OverFloat min 1 ; OverFloat max 9 ; OverFloat = 7 ; Half ? 7
== Numbers_CopiesNarrowRangeAndAccess
IntReg A @0:4 ; IntReg B @4:4 ; Integer Narrow pValue=B Min=10 Max=20 ; Integer Both pValue=A pValueCopy=Narrow
--
Both = 15 ; @0 ? F ; @4 ? F ; Both min 10 ; Both max 20 ; Both = 21 !OutOfRange ; Narrow readonly ; Both mode RO
== Numbers_CopiesAreWrittenOnTheGridThatAllHave
IntReg A @0:4 ; IntReg B @4:4 ; Integer Inner pValue=A Min=2 Max=100 Inc=4 ; Integer Sixes pValue=B Min=0 Max=90 Inc=6
Integer Odd pValue=B Min=1 Max=99 Inc=4 ; Integer Later pValue=B Min=50 Max=70 Inc=4 ; IntReg Whole @8:4
Integer Both pValueCopy=Sixes pValue=Inner ; Integer Never pValue=Inner pValueCopy=Odd ; Float Real pValue=Inner pValueCopy=Odd
Integer Shifted pValueCopy=Later pValue=Whole ; Integer Huge pValue=Far pValueCopy=Sixes
Integer Far Value=9223372036854775807 Min=9223372036854775806 Inc=9223372036854775807
--
Both min 6 ; Both inc 12 ; Both max 90 ; Both = 18 ; @0 ? 12 ; @4 ? 12 ; Both = 20 !OutOfRange ; Both = 6 ; @4 ? 6
Never min 2 ; Never inc 4 ; Never max 99 ; Never = 10 ; @0 ? A ; @4 ? A ; Never = 11 !OutOfRange ; Never = 102 !OutOfRange
Real = 14 ; @4 ? E ; Shifted min 50 ; Shifted inc 4 ; Shifted = 54 ; @8 ? 36 ; Shifted = 52 !OutOfRange
Huge min 9223372036854775806 ; Huge max 90
== Numbers_AConstantFormulaSaysNothingOfTheBounds
IntReg Raw @0:4 ; IntConverter Reset FormulaTo=FROM FormulaFrom=0 pValue=Raw
Converter Linear FormulaTo=FROM FormulaFrom=C Constant.C=7 pValue=Low IsLinear=Yes ; Integer Low pValue=Raw Max=9
--
Reset = 5 ; @0 ? 5 ; Reset ? 0 ; Reset max 0x7FFFFFFFFFFFFFFF ; Reset min -9223372036854775808 ; Linear = 3 ; @0 ? 3
Linear ? 7 ; Linear incmode 0 ; Linear = 10 !OutOfRange~node 'Low'
== Numbers_UnitAndRepresentationAreThoseOfTheNodeThatHoldsTheValue
IntReg A @0:4 Unit=us Representation=HexNumber ; IntReg B @4:4 Unit=Hz ; IntReg Which @8:4
Integer Over pValue=A ; Float Chosen pIndex=Which pValueIndexed[0=A pValueIndexed[1=B ; Float Outer pValue=Chosen
Integer Own pValue=A Unit=ms Representation=Linear ; Converter Other FormulaTo=FROM FormulaFrom=TO pValue=A
Integer Loop pValue=Loop ; Integer Plain Value=1
--
Over unit us ; Over representation 4 ; Over text 0x0 ; Chosen unit us ; Outer unit us ; Outer representation 4 ; Which = 1
Outer unit Hz ; Outer representation 3 ; Own unit ms ; Own text 0 ; Own representation 0 ; Other unit ; Loop unit
Plain representation 3 ; Which = 2 ; Outer unit
== Numbers_IndexChoosesConstantNodeOrDefault
Integer Index Value=1 ; IntReg Reg @0:4
Integer Gain pIndex=Index ValueIndexed[5=55 ValueIndexed[1=11 pValueIndexed[2=Reg ValueDefault=99
Integer Other pIndex=Index ValueIndexed[1=1 Value=7 ; Float NoDefault pIndex=Index ValueIndexed[0x2=0.5
Integer NoIndex ValueIndexed[1=1
--
Gain ? 11 ; NoDefault ? !OutOfRange ; NoDefault mode NA ; Gain = 12 ; Index = 2 ; Gain ? 0 ; NoDefault ? 0.5
Other ? 7 ; Gain = 22 ; @0 ? 16 ; Index = 3 ; Gain ? 99 ; Index = 1 ; Gain ? 12 ; Index = 5 ; Gain ? 55
NoIndex problem ~no pIndex
== Numbers_IntegerFormulasStayInIntegersFloatOnesInDoubles
Integer One Value=1 ; Integer Big Value=9007199254740993 Min=3 Max=77 Inc=2 ; Float Real Value=2.5 Min=0.5
Enumeration E :X=5,NumericValue=2.5 Value=5 ; IntSwissKnife Half pVariable.A=One Formula=A/2
SwissKnife FloatHalf pVariable.A=One Formula=A/2
IntSwissKnife Exact pVariable.B=Big Constant.C=2 Expression.X=B*C Formula=X/C
SwissKnife ByEnum pVariable.E=E Formula=E+E.Entry.X*10
IntSwissKnife OfBounds pVariable.B=Big pVariable.B.Max=Big Formula=B.Max*100+B.Min*10+B.Inc
SwissKnife OfFloats pVariable.R=Real Formula=R.Min+R.Inc+R.Value
SwissKnife Guarded pVariable.A=One Formula=(A=1)?4:1/(A-1) ; IntSwissKnife NoSuffix pVariable.A=One Formula=A.Unit
--
Half ? 0 ; FloatHalf ? 0.5 ; Exact ? 9007199254740993 ; ByEnum ? 55 ; OfBounds ? 7732 ; OfFloats ? 3 ; Guarded ? 4
Half mode RO ; Half = 1 !Access ; Half := 1 !Access~cannot be written ; FloatHalf := 1 !Access
NoSuffix problem ~'One' has no 'Unit'
== Numbers_ConvertersThereAndBackWithTheirBounds
IntReg Raw @0:4 Sign=Unsigned ; Integer Period pValue=Raw Min=10 Max=1000 ; Float Coarse pValue=Period Inc=0.5
Converter Rate FormulaTo=1000000/FROM FormulaFrom=1000000/TO pValue=Period Slope=Decreasing
Converter Wrong FormulaTo=1000000/FROM FormulaFrom=1000000/TO pValue=Period Slope=Increasing
Converter Linear FormulaTo=FROM/-4 FormulaFrom=TO*-4 pValue=Coarse IsLinear=Yes
Float FrameRate pValue=Rate Unit=Hz
IntConverter Scaled FormulaTo=FROM/3 FormulaFrom=TO*3 pValue=Period IsLinear=Yes
IntConverter Pole FormulaTo=FROM FormulaFrom=100/(TO-10) pValue=Period
Converter Any FormulaTo=FROM FormulaFrom=TO pValue=Raw Slope=Varying
Converter Nowhere FormulaTo=FROM FormulaFrom=TO
--
FrameRate min 1000 ; FrameRate max 100000 ; Wrong min 1000 ; Wrong max 100000 ; FrameRate unit Hz ; FrameRate = 2000
@0 ? 1F4 ; FrameRate ? 2000 ; FrameRate = 999 !OutOfRange ; Scaled min 30 ; Scaled inc 3 ; Scaled = 60 ; @0 ? 14
Scaled = 61 !OutOfRange ; Any min -1.7976931348623157e308 ; Linear inc 2 ; Linear max -40 ; Pole max 0
Pole min -9223372036854775808 ; Nowhere problem ~has no pValue
== Numbers_TextsByRepresentationAndNotation
Integer Hex Value=0xC0A80102 Representation=HexNumber ; Integer Ip Value=0xC0A80102 Representation=IPV4Address
Integer Mac Value=0x0011223344AA Representation=MACAddress ; Float Plain Value=0.1
Float Fixed Value=3.14159 DisplayNotation=Fixed DisplayPrecision=2
Float Science Value=31415.9 DisplayNotation=Scientific DisplayPrecision=3
--
Hex text 0xC0A80102 ; Ip text 192.168.1.2 ; Mac text 00:11:22:33:44:AA ; Plain text 0.1 ; Fixed text 3.14
Science text 3.142e+04 ; Plain = inf !OutOfRange ; Plain := inf ; Plain text INF ; Plain := nan ; Plain text NAN
Ip <- 10.0.0.255 ; Ip ? 0x0A0000FF ; Mac <- ff:0:1:2:3:4 ; Mac ? 0xFF0001020304 ; Plain <-  1.25e3  ; Plain ? 1250
Ip <- 10.0.0.256 !InvalidArgument ; Hex <- ten !InvalidArgument ; Plain <- 1,5 !InvalidArgument
== Choices_EnumerationsRefuseWhatIsNotThereAndShowNumericValues
IntReg Reg @0:4 ; Integer No Value=0 ; Integer HasSlow Value=0
Enumeration Mode :Off=0,NumericValue=1.5 :Slow=2,NumericValue=10,pIsAvailable=HasSlow :Fast=4,NumericValue=20 :Never=6,pIsImplemented=No :Broken :Twin=2,NumericValue=30 pValue=Reg
Enumeration Other :Off=7 :Dark=8,Symbolic=Black :Bad=x :Pulse=9,IsSelfClearing=Yes Value=7 ; Float Speed pValue=Mode
--
Mode text Off ; Mode <- Fast ; @0 ? 4 ; Mode <- Slow !Access~'Slow' is not available
Mode <- Never !Access~not implemented ; Mode = 6 !Access ; Mode = 5 !OutOfRange ; Mode <- Nothing !InvalidArgument
Mode <- Broken !InvalidArgument ; Mode text Fast ; Mode = 2 ; Mode current EnumEntry_Mode_Twin ; HasSlow = 1
Mode current EnumEntry_Mode_Slow ; Mode symbolics Off,Slow,Fast,Twin ; @0 = 63 ; Mode ?? 99 ; Mode current none
Mode text !Runtime~99 has no entry ; Mode reading ~_Fast,EnumEntry_Mode_Never ; Other <- Black ; Other ? 8
Other <- Bad !InvalidArgument ; Other symbolics Off,Black,Pulse ; EnumEntry_Mode_Off ? 0 ; EnumEntry_Other_Off ? 7
EnumEntry_Mode_Slow mode RO ; EnumEntry_Mode_Never mode NI ; EnumEntry_Mode_Fast numeric 20
EnumEntry_Other_Off numeric 7 ; EnumEntry_Mode_Fast text Fast ; Mode = 0 ; HasSlow = 0 ; Speed ? 1.5 ; Speed min 1.5
Speed max 30 ; Speed = 12 ; @0 ? 4 ; HasSlow = 1 ; Speed = 12 ; @0 ? 2 ; Speed = 31 !OutOfRange
== Choices_BooleansHaveOnAndOffValues
IntReg Reg @0:4 ; Boolean Plain pValue=Reg ; Boolean Odd pValue=Reg OnValue=7 OffValue=1
Boolean Constant Value=true ; Boolean Never Value=false ; Integer Over pValue=Odd
--
Odd = 1 ; @0 ? 7 ; Odd = 0 ; @0 ? 1 ; Odd ? 0 ; Plain ? 1 ; Odd <- true ; Odd text 1 ; Constant ? 1 ; Never ? 0
Odd <- maybe !InvalidArgument ; @0 = 2 ; Odd ?? 1 ; @0 = 0 ; Odd ?? 0 ; Over max 1 ; Over = 2 !OutOfRange
== Choices_CommandsAreDoneWhenTheDeviceHasReplacedTheValue
IntReg Reg @0:4 ; Integer Value Value=3 ; Command Run pValue=Reg pCommandValue=Value
Command Blind ImposedAccessMode=WO pValue=Reg CommandValue=9 ; Command Plain pValue=Reg
--
Run calls 0 ; Run execute ; Run calls 1 ; @0 ? 3 ; reads 0 ; Run done 0 ; Run text 0 ; reads 2 ; @0 = 0 ; Run done 1
Run done 1 ; Run calls 1 ; Blind execute ; Blind done 1 ; @0 ? 9 ; Plain <- 1 ; @0 ? 1 ; @0 = 5 ; Plain <- 0
@0 ? 5 ; Plain <- x !InvalidArgument
== Choices_DeviceErrorAfterAWriteIsAnException
IntReg Status @0:4 ; IntReg Reg @4:4 ; Enumeration Error :Fine=0 :TooHot=3 pValue=Status
Integer Feature pError=Error pValue=Reg
--
Feature = 1 ; @0 = 3 ; Feature = 2 !Runtime~'TooHot' in 'Error' ; @4 ? 2 ; Feature ? 2 ; @0 = 0 ; Feature = 3
== Choices_PropertiesAndLinks
Category Root pFeature=Width ; Integer Width Visibility=Expert pMax=Max pValue=Reg pCastAlias=Real
Integer Max Value=10 ImposedVisibility=Guru ; IntReg Reg @0:4 Visibility=Invisible
Float Real pValue=Width pAlias=Max ; Float Chain pValue=Real
Enumeration Selector :A=0 Value=0 pSelected=Width pSelected=Max
IntSwissKnife Knife pVariable.A=Width pVariable.B=Max Formula=A+B ; Command Run Value=0 pInvalidator=Knife
--
Width visibility 1 ; Max visibility 2 ; Reg visibility 3 ; Real visibility 0 ; Width aliases none,Real ; Real aliases Max,none
Knife property:pVariable Width,Max|A,B ; Width property:Name Width| ; Width property:Representation none|
Width property:NoSuchThing none| ; Selector property:EnumEntry EnumEntry_Selector_A| ; Width reading Max,Reg
Width writing Reg ; Width invalidating ; Run invalidating Knife ; Width parents Root,Real,Knife
Max parents Width,Knife ; Width depending Real,Knife ; Knife depending Run ; Knife parents ; Chain terminals Reg
Selector reading EnumEntry_Selector_A ; Selector selected Width,Max ; Width selecting Selector ; Max selected
== Cache_ModesOfCaching
IntReg Through @0:4 Cachable=WriteThrough ; IntReg Around @4:4 Cachable=WriteAround
IntReg Never @8:4 Cachable=NoCache ; FloatReg Real @12:4 ; Integer OverNever pValue=Never
Integer OnNever pIndex=Never ValueDefault=1 ; Integer BoundNever pMax=Never Value=1 ; Integer Broken pValue=Nobody
--
Through = 1 ; Through ? 1 ; reads 0 ; Around = 1 ; Around ? 1 ; reads 1 ; Around ? 1 ; reads 0 ; OverNever = 1
OverNever ? 1 ; reads 1 ; OverNever ? 1 ; reads 1 ; OverNever caching 0 ; OnNever caching 0 ; BoundNever caching 1
Broken caching 0 ; Never caching 0 ; Around caching 2 ; Through cached 1 ; Never cached 0 ; Real = 2 ; Real ? 2
reads 0 ; @12 = 40400000 ; Real ?? 3 ; Real ? 3 ; @0 = 4D ; Through ? 1 ; Through ?? 77 ; Through ? 77
== Cache_WriteInvalidatesAllThatDependsOnIt
IntReg Width @0:4 ; IntReg Height @4:4 ; IntSwissKnife Pixels pVariable.W=Width pVariable.H=Height Formula=W*H
IntConverter Bytes FormulaTo=FROM/2 FormulaFrom=TO*2 pValue=Pixels ; Integer Payload pValue=Bytes pMax=Pixels
--
Width = 10 ; Height = 3 ; Payload ? 60 ; reads 0 ; Payload ? 60 ; Payload cached 1 ; reads 0 ; Height = 4
Payload cached 0 ; Payload ? 80 ; Payload max 40 ; @0 = 64 ; Width ?? 100 ; Payload ? 800
== Cache_InvalidatorsReachFeaturesCommandsRegistersAndMayGoInCircles
IntReg A @0:4 pInvalidator=Run pInvalidator=B ; IntReg B @4:4 pInvalidator=A ; IntReg Hidden @8:4
IntReg RunReg @12:4 ; Command Run pValue=RunReg CommandValue=1 ; Integer Feature pInvalidator=Run pValue=Hidden
Enumeration Pulse :Off=0 :On=1,IsSelfClearing=Yes pValue=Hidden
--
A ? 0 ; Feature ? 0 ; @0 = 5 ; @8 = 6 ; A ? 0 ; Feature ? 0 ; Run execute ; A ? 5 ; Feature ? 6 ; @0 = 7 ; B = 1
A ? 7 ; A = 8 ; A ? 8 ; Pulse = 1 ; @8 = 0 ; Pulse ? 0 ; Pulse = 0 ; @8 = 1 ; Pulse ? 0
== Cache_WhileASelfClearingEntryIsSetTheDeviceIsAsked
IntReg Reg @0:4 ; Enumeration Pulse :Off=0 :Once=1,IsSelfClearing=Yes pValue=Reg ; Integer Feature pIsLocked=Busy Value=1
IntSwissKnife Busy pVariable.P=Pulse Formula=P=1
--
Pulse calls 0 ; Pulse = 1 ; Pulse calls 1 ; reads 0 ; Pulse ? 1 ; Pulse cached 0 ; Busy ? 1 ; Feature mode RO ; Pulse ? 1
reads 4 ; @0 = 0 ; Feature mode RW ; Busy ? 0 ; Pulse ? 0 ; reads 1 ; Pulse cached 1 ; @0 = 1 ; Pulse ? 0 ; Pulse ?? 1
Feature mode RO ; @0 = 0 ; Busy ? 0 ; Pulse = 1 ; Pulse = 0 ; @0 = 7 ; Pulse ? 0 ; fail reads ; Pulse = 1 ; Pulse ? !Access
fail none ; Pulse ? 1 ; @0 = 0 ; Pulse ? 0
== Cache_PollingDropsValuesWhoseTimeHasPassed
IntReg Slow @0:4 PollingTime=1000 ; IntReg Fast @4:4 PollingTime=100
IntReg Blocked @8:4 PollingTime=100 pBlockPolling=Block ; Integer Block Value=1 ; IntReg Never @8:4
Integer OverFast pValue=Fast
--
Slow calls 0 ; OverFast calls 0 ; Blocked calls 0 ; Never calls 0 ; OverFast ? 0 ; @4 = 3 ; poll 99 ; OverFast ? 0
poll -5 ; OverFast ? 0 ; poll 1 ; OverFast ? 3 ; OverFast calls 1 ; Slow calls 0 ; poll 100000 ; Slow calls 1
OverFast calls 1 ; Never calls 0 ; poll 99 ; OverFast calls 0 ; Fast polling 100 ; Never polling -1
Blocked calls 0 ; Block = 0 ; poll 1 ; Blocked calls 1 ; poll 99 ; Blocked calls 0
== Cache_CallbacksFireForTheChangedAndItsDependentsOnce
IntReg Reg @0:4 ; IntReg Other @4:4 ; Integer Feature pValue=Reg ; Integer Bounded pMax=Feature Value=0
--
Reg calls 0 ; Feature calls 0 ; Bounded calls 0 ; Other calls 0 ; Feature = 1 ; Reg calls 1 ; Feature calls 1
Bounded calls 1 ; Other calls 0 ; Feature ?? 1 ; Feature calls 0 ; Feature imposemax 5 ; Bounded calls 1
Feature calls 1
== Cache_FailedWriteLeavesNothingStaleBehind
IntReg Reg @0:4 ; Integer Feature pValue=Reg
--
Feature = 2 ; fail writes ; Feature = 3 !Access ; fail none ; Feature ? 2 ; reads 1
== Broken_CirclesAreNamedWithLineAndNodeAndHarmNobodyElse
Integer A pValue=B ; Integer B pValue=A ; Integer Self pValue=Self ; IntSwissKnife K1 pVariable.V=K2 Formula=V
IntSwissKnife K2 pVariable.V.Max=I Formula=V.Max ; Integer I Value=1 pMax=K1
Integer Copy Value=1 pValueCopy=Copier ; Integer Copier Value=1 pValueCopy=Copy ; Integer User pValue=A
Integer W Value=3 pMax=WMax ; IntSwissKnife WMax pVariable.O=O Formula=10-O ; Integer O Value=2 pMax=OMax
IntSwissKnife OMax pVariable.W=W Formula=10-W ; Integer Lock Value=1 pIsLocked=Lock2 ; Integer Lock2 pValue=Lock
--
A mode NA ; A problem ~circle ('A', 'B') ; B problem ~circle ; Self problem ~circle ('Self') ; K1 problem ~circle
K2 mode NA ; I mode NA ; Copy problem ~circle ; Copier mode NA ; User mode NA
User ? !Access~description:3: node 'A' ; User ? !Access~'B' ; Copy = 2 !Access ; I max !Access ; W max 8 ; O max 7
O = 7 ; W max 3 ; Lock mode RO ; Lock2 mode RO
== Broken_FaultyElementsSwitchOffTheirNodeOnly
IntReg Good @0:4 ; Integer BadMin Value=4 Min=low ; IntSwissKnife Zero Formula=1/0 ; Integer NoValue Min=1
Integer Missing pValue=Nobody ; IntSwissKnife BadFormula Formula=1+*2 ; IntSwissKnife NoFormula
IntSwissKnife BadVariable pVariable.A=Nobody Formula=A ; IntReg TooLong @0:9 ; IntReg Huge @0:-5
IntReg NoPort Address=0 Length=4 ; IntReg NoAddress Length=4 pPort=Device ; IntReg NoLength Address=4 pPort=Device
IntReg OddPort Address=0 Length=4 pPort=Good ; MaskedIntReg OffBits @0:2 LSB=0 MSB=16
--
NoValue problem ~has no value ; NoValue ? !Access ; NoValue = 1 !Access ; Missing ? !Access~unknown node
Missing mode NA ; BadFormula problem ~formula ; BadFormula mode NA ; NoFormula problem ~no formula
BadVariable ? !Access~unknown node ; TooLong problem ~at most 8 bytes ; Huge problem ~Length '-5'
NoPort problem ~no port ; NoAddress problem ~no address ; NoLength problem ~no length ; OddPort problem ~not a port
OddPort mode NA ; OffBits problem ~outside its 2 bytes ; BadMin ? 4 ; BadMin problem ~'low' is not a number
Zero ? !Runtime~(line ; Good = 1 ; Good ?? 1
)";

class NodeScripts : public ::testing::TestWithParam<Section> {};

TEST_P(NodeScripts, Run) {
    NodeScript(GetParam().nodes).Run(GetParam().steps);
}

INSTANTIATE_TEST_SUITE_P(GenApi, NodeScripts, ::testing::ValuesIn(Sections(Scripts)),
                         [](const auto& section) { return section.param.name; });

} // namespace VX3::Test

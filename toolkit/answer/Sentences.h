#pragma once

#include "toolkit/Sentence.h"

/// Every sentence that says why a target has no position, and what serves a machine.
namespace korvo::sentences {

// --- the question

inline constexpr Text kNoTarget{
    "no target: the point or the direction is beyond the range of numbers, or the direction is "
    "null",
    "pas de cible : le point ou la direction dépasse le domaine des nombres, ou la direction est "
    "nulle"};
inline constexpr Text kNoStart{"no start: one of its values is not finite",
                               "pas de position de départ : une de ses valeurs n'est pas finie"};

inline constexpr Text kStartTooFar{
    "no start: a rotary axis is more than 1e9 degrees from zero, too far for its angle to be one",
    "pas de position de départ : un axe rotatif est à plus de 1e9 degrés de zéro, trop loin pour "
    "que son angle en soit un"};
inline constexpr Text kFarStart{
    "the start is so far away that rounding leaves the tool {0} from the direction",
    "la position de départ est si loin que l'arrondi laisse l'outil à {0} de la direction"};

// --- the direction

inline constexpr Text kBesideCone{
    "the direction lies {0} beside the cone that the tool describes about {1}",
    "la direction est à {0} du cône que l'outil décrit autour de {1}"};
inline constexpr Text kBesideBand{"the direction lies {0} beside what is reached by {1}",
                                  "la direction est à {0} de ce que {1} permettent d'atteindre"};
inline constexpr Text kWristLeaves{"the wrist leaves the tool {0} from the direction",
                                   "le poignet laisse l'outil à {0} de la direction"};
inline constexpr Text kNoRotary{"no free rotary axis: the tool stays {0} from the direction",
                                "aucun axe rotatif libre : l'outil reste à {0} de la direction"};

// --- the point

inline constexpr Text kNoLinear{"no free linear axis: the point is missed by {0}",
                                "aucun axe linéaire libre : le point est manqué de {0}"};
inline constexpr Text kOneLinear{
    "1 free linear axis does not carry the tool there: the point is missed by {0}",
    "1 axe linéaire libre n'y amène pas l'outil : le point est manqué de {0}"};
inline constexpr Text kFewLinear{
    "{1} free linear axes do not carry the tool there: the point is missed by {0}",
    "{1} axes linéaires libres n'y amènent pas l'outil : le point est manqué de {0}"};
inline constexpr Text kDependent{
    "no three free linear axes in independent directions: the point is missed by {0}",
    "les axes linéaires libres n'ont pas trois directions indépendantes : le point est manqué de "
    "{0}"};
inline constexpr Text kOutOfReach{
    "out of reach: the wrist centre would lie {0} beyond what the arm reaches",
    "hors de portée : le centre du poignet serait à {0} de ce que le bras atteint"};

// --- limits and locks

inline constexpr Text kOutside{"outside the limits: {0}", "hors des courses : {0}"};
inline constexpr Text kBelow{"{0} below by {1}", "{0} descend de {1} sous son minimum"};
inline constexpr Text kAbove{"{0} above by {1}", "{0} dépasse de {1} son maximum"};
inline constexpr Text kLocked{
    "{0} is locked: the target would be reached with {1}, {2} away",
    "{0} est bloqué : la cible serait atteinte avec {1}, soit un écart de {2}"};
inline constexpr Text kAllLocked{"{0} are locked: the target would be reached with {1}",
                                 "{0} sont bloqués : la cible serait atteinte avec {1}"};
inline constexpr Text kHeld{
    "{0} is held: the target would be reached with {1}, {2} away",
    "{0} est maintenu : la cible serait atteinte avec {1}, soit un écart de {2}"};
inline constexpr Text kStays{
    "a path leaves {0} where the start has it: the target would be reached with {1}, {2} away",
    "un parcours laisse {0} où le départ l'a mis : la cible serait atteinte avec {1}, soit un "
    "écart de {2}"};
inline constexpr Text kAt{"{0} at {1}", "{0} à {1}"};

// --- what serves a machine

inline constexpr Text kServesLinear{"no free rotary axis: {1} carry the tool as it points",
                                    "aucun axe rotatif libre : {1} déplacent l'outil tel qu'il est "
                                    "orienté"};
inline constexpr Text kServesOne{"one rotary axis: {0} turns the tool, {1} carry it",
                                 "un axe rotatif : {0} oriente l'outil, {1} le déplacent"};
inline constexpr Text kServesTwo{"two rotary axes: {0} turn the tool, {1} carry it",
                                 "deux axes rotatifs : {0} orientent l'outil, {1} le déplacent"};
inline constexpr Text kServesMore{
    "more than two rotary axes: every two of {0} turn the tool while the others stand, {1} carry "
    "it",
    "plus de deux axes rotatifs : {0} orientent l'outil, deux à la fois, les autres restant en "
    "place ; {1} le déplacent"};
inline constexpr Text kServesArm{"arm: {1} carry the wrist, {0} turn the tool",
                                 "bras : {1} déplacent le poignet, {0} orientent l'outil"};
inline constexpr Text kTurnsAlone{"one rotary axis: {0} turns the tool, nothing carries it",
                                  "un axe rotatif : {0} oriente l'outil, aucun axe ne le déplace"};
inline constexpr Text kTurnAlone{"two rotary axes: {0} turn the tool, nothing carries it",
                                 "deux axes rotatifs : {0} orientent l'outil, aucun axe ne le "
                                 "déplace"};
inline constexpr Text kStands{"no free axis: the tool stands",
                              "aucun axe libre : l'outil reste en place"};
inline constexpr Text kRedundant{"a target leaves {0} free to choose",
                                 "une cible laisse {0} au choix"};
inline constexpr Text kStayLocked{"locked: {0}", "bloqué : {0}"};

// --- machines that the closed forms do not serve

inline constexpr Text kUnserved{"no closed form serves this machine: {0}",
                                "aucune solution analytique pour cette machine : {0}"};
inline constexpr Text kNoTool{"it has no current tool, or one without a direction",
                              "elle n'a pas d'outil courant, ou un outil sans direction"};
inline constexpr Text kCoupled{"one value, {0}, moves two joints",
                               "une même valeur, {0}, déplace deux articulations"};
inline constexpr Text kFewJoints{
    "linear axes: {0}, rotary axes: {1}, where three linear axes or six joints are wanted",
    "axes linéaires : {0}, axes rotatifs : {1}, alors qu'il faut trois axes linéaires ou six "
    "articulations"};
inline constexpr Text kNoBallWrist{"the lines of {0} miss each other by {1}",
                                   "les axes {0} ne se coupent pas en un point : écart de {1}"};
inline constexpr Text kNoWristPoint{"the lines of {0} have no point in common",
                                    "les axes {0} n'ont aucun point commun"};
inline constexpr Text kWristOnThird{
    "the line of {0} passes through the point where those of {1} meet, so that {0} does not carry "
    "it",
    "l'axe {0} passe par le point où se coupent les axes {1}, si bien que {0} ne le déplace pas"};
inline constexpr Text kSplitWrist{
    "{0} moves between the axes of the wrist, {1}, whose lines therefore do not always meet in one "
    "point",
    "{0} se déplace entre les axes du poignet, {1}, qui ne se coupent donc pas toujours en un "
    "point"};
inline constexpr Text kSolvedSample{
    "a target does not leave {0} free to choose: an axis that is solved for is not sampled",
    "une cible ne laisse pas {0} au choix : un axe que le calcul détermine ne s'échantillonne pas"};
inline constexpr Text kNorLibrary{"{0}; nor does the library's own solver serve it",
                                  "{0} ; le solveur de la bibliothèque ne la traite pas non plus"};
inline constexpr Text kAskLibrary{
    "{0}; the library's own solver may answer (LibrarySolver, --engine library)",
    "{0} ; le solveur de la bibliothèque peut répondre (LibrarySolver, --engine library)"};

// --- the library's solvers

inline constexpr Text kNoSolver{
    "no solver for such a machine: it has neither three independent linear axes nor two rotary "
    "axes that turn the tool",
    "aucun solveur pour une telle machine : elle n'a ni trois axes linéaires indépendants ni deux "
    "axes rotatifs qui orientent l'outil"};
inline constexpr Text kMissed{"missed by the arm solver, by {0}",
                              "manqué par le solveur de bras, de {0}"};
inline constexpr Text kStartOfArm{
    "missed by the arm solver, by {0}: from this start it turns the first joint to the side from "
    "which the arm does not reach",
    "manqué par le solveur de bras, de {0} : depuis cette position de départ il fait tourner la "
    "première articulation vers le côté d'où le bras n'atteint pas la cible"};
inline constexpr Text kMovesLocked{"the arm solver moves locked axes: {0}",
                                   "le solveur de bras déplace des axes bloqués : {0}"};

// --- what an arm has that the library's solver cannot do

inline constexpr Text kOff{"{0} ({1} off)", "{0} (écart de {1})"};
inline constexpr Text kFewElements{"fewer than four elements from the first rotary axis on",
                                   "moins de quatre éléments à partir du premier axe rotatif"};
inline constexpr Text kNotUpright{"{0} is not upright (+Z) on the machine's Z line",
                                  "{0} n'est pas vertical (+Z) sur l'axe Z de la machine"};
inline constexpr Text kAxisBefore{"an axis stands before {0}, the first joint",
                                  "un axe précède {0}, la première articulation"};
inline constexpr Text kHighNumbers{
    "the first three joints do not have the three lowest axis numbers",
    "les trois premières articulations n'ont pas les trois plus petits numéros d'axe"};
inline constexpr Text kShape{
    "the first four joints are not rotary ones, the second square to the first and the third "
    "parallel to the second",
    "les quatre premières articulations ne sont pas rotatives, la deuxième perpendiculaire à la "
    "première et la troisième parallèle à la deuxième"};
inline constexpr Text kFourthSquare{
    "the fourth joint is not square to the third",
    "la quatrième articulation n'est pas perpendiculaire à la troisième"};
inline constexpr Text kUpperArm{
    "the lines of the second and third joint are the same",
    "les axes de la deuxième et de la troisième articulation sont confondus"};
inline constexpr Text kSameSense{
    "the third joint is directed against the second, with an offset to the fourth",
    "la troisième articulation est de sens opposé à la deuxième, avec un décalage vers la "
    "quatrième"};
inline constexpr Text kBallWrist{"the last three joints do not meet in one point",
                                 "les trois dernières articulations n'ont pas de point commun"};
inline constexpr Text kToolOffLine{"the tool does not lie on the line of the last joint",
                                   "l'outil n'est pas sur l'axe de la dernière articulation"};
inline constexpr Text kOtherTool{
    "another tool hangs on the same wrist, and the wrist is solved with that one's length",
    "un autre outil est monté sur le même poignet, qui est résolu avec la longueur de celui-là"};
inline constexpr Text kBehind{
    "the wrist centre lies in the plane Y = 0 behind the first joint, which is put to 0 there "
    "whatever the start: the third may come out a full turn away",
    "le centre du poignet est dans le plan Y = 0 derrière la première articulation, qui y est mise "
    "à 0 quel que soit le départ : la troisième peut ressortir à un tour près"};

}  // namespace korvo::sentences
